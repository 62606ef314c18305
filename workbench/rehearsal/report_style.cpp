#include "workbench/rehearsal/report_style.h"

namespace rehearsal
{

namespace
{

const char *const Style = R"(
:root {
  color-scheme: light dark;
  --page: #f6f7f9; --card: #ffffff; --ink: #1b1f24; --soft: #57606a; --rule: #d5dae0; --grid: #e6e9ed;
  --voltage: #0550ae; --current: #9a4a00; --set: #57606a; --bad: #b3141f; --badpaper: #fdecec;
  --warn: #7a4d00; --warnpaper: #fff6e0; --good: #116329; --goodpaper: #e6f6ea; --fault: #6f32b0; --link: #0550ae;
  --shade: rgba(0, 0, 0, .3);
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #0e1116; --card: #161b22; --ink: #e6edf3; --soft: #9aa4af; --rule: #343b44; --grid: #262c34;
    --voltage: #6cb6ff; --current: #ffa657; --set: #9aa4af; --bad: #ff7b72; --badpaper: #3a1618;
    --warn: #e3b341; --warnpaper: #332701; --good: #56d364; --goodpaper: #12301b; --fault: #c297ff; --link: #6cb6ff;
    --shade: rgba(180, 200, 220, .45);
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body { margin: 0; background: var(--page); color: var(--ink);
  font: 1rem/1.5 system-ui, "Segoe UI", "DejaVu Sans", Arial, sans-serif; }
main { max-width: 1160px; margin: 0 auto; padding: 24px 20px 64px; }
h1 { font-size: 1.7rem; line-height: 1.25; margin: 0 0 12px; overflow-wrap: anywhere; }
h2 { font-size: 1.25rem; margin: 40px 0 12px; }
h3 { font-size: 1.05rem; margin: 0; overflow-wrap: anywhere; }
p { margin: 0 0 8px; }
a { color: var(--link); }
:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
.scroll:focus-visible, pre:focus-visible { outline-offset: -2px; }
code, pre { font-family: ui-monospace, "DejaVu Sans Mono", Consolas, monospace; font-size: .85rem; }
.verdict { border: 1px solid; border-left-width: 8px; border-radius: 6px; padding: 14px 18px; margin: 0 0 20px; }
.verdict strong { font-size: 1.25rem; display: block; }
.verdict.good { color: var(--good); background: var(--goodpaper); }
.verdict.bad { color: var(--bad); background: var(--badpaper); }
.verdict p { color: var(--ink); margin: 2px 0 0; }
dl.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(205px, 1fr)); gap: 12px 20px; margin: 0 0 20px; }
dl.facts dt { color: var(--soft); font-size: .85rem; }
dl.facts dd { margin: 0; overflow-wrap: anywhere; white-space: pre-line; }
nav ul { list-style: none; display: flex; flex-wrap: wrap; gap: 4px 20px; padding: 0; margin: 0; }
/* A shade at the side where the table goes on: the covers move with the table, the shades do not. */
.scroll { overflow-x: auto; border: 1px solid var(--rule); border-radius: 6px; background:
  linear-gradient(to right, var(--card) 50%, transparent) 0 0 / 48px 100% no-repeat local,
  linear-gradient(to left, var(--card) 50%, transparent) 100% 0 / 48px 100% no-repeat local,
  linear-gradient(to right, var(--shade), transparent) 0 0 / 16px 100% no-repeat scroll,
  linear-gradient(to left, var(--shade), transparent) 100% 0 / 16px 100% no-repeat scroll, var(--card); }
table { border-collapse: collapse; width: 100%; font-size: .92rem; }
th, td { text-align: left; vertical-align: top; padding: 7px 12px; border-bottom: 1px solid var(--grid); }
tbody tr:last-child td { border-bottom: 0; }
th { color: var(--soft); font-weight: 600; white-space: nowrap; border-bottom: 1px solid var(--rule); }
td.number { white-space: nowrap; font-variant-numeric: tabular-nums; }
tr.bad .outcome { color: var(--bad); font-weight: 600; }
tr:target td { background: var(--warnpaper); }
#peaks td, #crossings td, #ramps td, #files td { white-space: nowrap; }
#peaks td:first-child, #crossings td:first-child, #ramps td:first-child, #files td:first-child {
  white-space: normal; overflow-wrap: anywhere; min-width: 8em; }
#files td:first-child { min-width: 14em; }
#peaks td.outcome { white-space: normal; min-width: 10em; }
#request-table td:nth-child(5) { min-width: 260px; }
#request-table td:nth-child(6) { min-width: 130px; }
#request-table td:last-child { white-space: nowrap; }
details summary { cursor: pointer; }
figure summary { color: var(--soft); font-size: .9rem; }
details code { display: block; margin: 4px 0; overflow-wrap: anywhere; white-space: pre-wrap; color: var(--soft); }
ul.findings { list-style: none; margin: 0; padding: 0; }
ul.findings li { background: var(--badpaper); border-left: 4px solid var(--bad); border-radius: 4px; padding: 10px 14px;
  margin: 0 0 8px; }
ul.findings li.warning { background: var(--warnpaper); border-color: var(--warn); }
ul.findings strong { color: var(--bad); }
ul.findings strong::before { content: "✖ "; }
ul.findings li.warning strong { color: var(--warn); }
ul.findings li.warning strong::before { content: "! "; }
ul.findings p { margin: 2px 0 0; overflow-wrap: anywhere; }
ul.findings pre { margin: 6px 0 0; overflow-x: auto; }
.where, .note { color: var(--soft); font-size: .9rem; overflow-wrap: anywhere; }
.note { margin: 6px 0 0; }
figure.channel { margin: 0 0 20px; padding: 16px 18px 12px; background: var(--card); border: 1px solid var(--rule);
  border-radius: 6px; break-inside: avoid; --left: 72px; --right: 106px; }
figure.channel:target { border-color: var(--link); box-shadow: 0 0 0 1px var(--link); }
figcaption p { color: var(--soft); font-size: .9rem; margin: 0 0 8px; overflow-wrap: anywhere; }
.state.bad { color: var(--bad); font-weight: 600; white-space: nowrap; }
.panel { margin: 10px 0 14px; }
.panel .name { font-size: .85rem; font-weight: 600; margin-bottom: 9px; }
.name .far { font-weight: 400; color: var(--soft); margin-left: 14px; }
.plot { display: flex; height: 190px; }
.panel + .panel .plot { height: 140px; }
.values { position: relative; flex: 0 0 var(--left); font-size: .78rem; color: var(--soft); font-variant-numeric: tabular-nums; }
.values span { position: absolute; right: 8px; transform: translateY(50%); line-height: 1; white-space: nowrap; }
.area { position: relative; flex: 1 1 0; min-width: 0; border-left: 1px solid var(--soft); }
.area svg { display: block; width: 100%; height: 100%; overflow: visible; }
svg path { fill: none; vector-effect: non-scaling-stroke; stroke-width: 1; }
path.grid { stroke: var(--grid); }
path.zero { stroke: var(--soft); }
path.voltage { stroke: var(--voltage); stroke-width: 2; stroke-linejoin: round; }
path.current { stroke: var(--current); stroke-width: 2; stroke-linejoin: round; }
path.set { stroke: var(--set); stroke-width: 1.5; stroke-dasharray: 2 3; }
path.limit { stroke: var(--bad); stroke-width: 1.5; stroke-dasharray: 8 4; }
path.plant { stroke: var(--soft); stroke-dasharray: 10 3 2 3; }
path.mark { stroke: var(--rule); }
path.mark.event { stroke: var(--rule); stroke-dasharray: 2 3; }
path.mark.error, path.mark.crossed { stroke: var(--bad); stroke-width: 1.5; }
path.mark.fault { stroke: var(--fault); stroke-dasharray: 4 3; }
.levels { position: relative; flex: 0 0 var(--right); font-size: .75rem; font-variant-numeric: tabular-nums; }
.level { position: absolute; left: 6px; transform: translateY(50%); line-height: 1; white-space: nowrap; }
.level.limit { color: var(--bad); }
.level.plant { color: var(--soft); }
.row { display: flex; height: 24px; align-items: center; }
.rowname { flex: 0 0 var(--left); font-size: .72rem; color: var(--soft); }
.over { position: relative; flex: 1 1 0; min-width: 0; height: 100%; margin-right: var(--right); }
.badge { font-size: .72rem; line-height: 18px; font-variant-numeric: tabular-nums; text-decoration: none;
  white-space: nowrap; border: 1px solid var(--rule); border-radius: 9px; padding: 0 5px; background: var(--card);
  color: var(--ink); }
/* From the left end of the strip to the right one, and never beyond: a badge lies on its mark with the part of it that
   is as far from its left end. */
.over .badge { position: absolute; top: 2px; left: var(--at); transform: translateX(calc(-1 * var(--at))); }
.strip.narrow { display: none; }
.badge.error, .badge.crossed { color: var(--bad); border-color: var(--bad); font-weight: 700; }
.badge.fault { color: var(--fault); border-color: var(--fault); }
.times .over span { position: absolute; top: 2px; transform: translateX(-50%); font-size: .78rem; color: var(--soft);
  font-variant-numeric: tabular-nums; }
ul.happened { list-style: none; margin: 8px 0 0; padding: 0; font-size: .88rem; columns: 2 340px; }
ul.happened li { break-inside: avoid; overflow-wrap: anywhere; }
ul.happened .error, ul.happened .crossed { color: var(--bad); }
ul.happened .fault { color: var(--fault); }
ul.key { list-style: none; display: flex; flex-wrap: wrap; gap: 4px 22px; padding: 0; margin: 0 0 14px;
  font-size: .88rem; color: var(--soft); }
ul.key li { display: flex; align-items: center; gap: 8px; }
ul.key svg { width: 32px; height: 12px; flex: none; }
pre.transcript { background: var(--card); border: 1px solid var(--rule); border-radius: 6px; padding: 12px; margin: 0;
  max-height: 480px; overflow: auto; }
.transcript .output { color: var(--good); }
.transcript .error { color: var(--bad); }
footer { margin-top: 48px; color: var(--soft); font-size: .85rem; }
@media (max-width: 960px) {
  .strip.wide { display: none; }
  .strip.narrow { display: block; }
}
@media (max-width: 640px) {
  main { padding: 16px 8px 48px; }
  h1 { font-size: 1.35rem; }
  figure.channel { padding: 12px 4px 8px; --left: 56px; --right: 58px; }
  .rowname { font-size: .62rem; }
  .levels { font-size: .68rem; }
  .level { left: 3px; }
  .level .word { display: none; }
  .times .over span:nth-child(even) { display: none; }
  dl.facts { grid-template-columns: repeat(2, minmax(0, 1fr)); }
}
@media print {
  :root { --page: #fff; --card: #fff; --ink: #000; --soft: #444; --rule: #c4c4c4; --grid: #ddd; --voltage: #0550ae;
    --current: #9a4a00; --set: #444; --bad: #b3141f; --badpaper: #fff; --warn: #7a4d00; --warnpaper: #fff;
    --good: #116329; --goodpaper: #fff; --fault: #6f32b0; --link: #000; }
  html { font-size: 12px; }
  body { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  main { max-width: none; padding: 0; }
  nav { display: none; }
  .scroll, pre.transcript { overflow: visible; max-height: none; background: none; }
  pre.transcript { white-space: pre-wrap; overflow-wrap: anywhere; }
  th, td:not(.number) { white-space: normal !important; }
  #request-table td { min-width: 0; }
  #request-table td:nth-child(n+3) { overflow-wrap: break-word; }
  h2 { break-after: avoid; }
  tr { break-inside: avoid; }
}
)";

} // namespace

QString reportStyle()
{
    return QString::fromUtf8(Style);
}

} // namespace rehearsal
