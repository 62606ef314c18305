#include "workbench/rehearsal/report_page.h"

#include "tests/rehearsal/browser.h"
#include "tests/rehearsal/example_recording.h"

#include <QImage>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

using browser::show;
using browser::Shown;
using rehearsal::Recording;

namespace
{

constexpr int Height = 4000; // of a page that is photographed

/// What is said of a page's appearance: pairs of texts that lie on one another, texts beyond the page, and what is too
/// faint to read, each with its contrast as WCAG counts it.
const char *const Look = R"(
const box = e => e.getBoundingClientRect();
const visible = (selector, within = document) =>
  [...within.querySelectorAll(selector)].filter(e => e.checkVisibility());
const textBox = e => {
  const range = document.createRange();
  range.selectNodeContents(e);
  return e.matches('.rowname') ? range.getBoundingClientRect() : box(e);
};
const areApart = (a, b) => a.right <= b.left + 0.5 || b.right <= a.left + 0.5
  || a.bottom <= b.top + 0.5 || b.bottom <= a.top + 0.5;
const overlaps = [];
for (const figure of document.querySelectorAll('figure.channel')) {
  const labels = visible('.badge, .level, .rowname, .times .over span, .values span, .area svg', figure);
  labels.forEach((a, i) => labels.slice(i + 1).forEach(b => {
    if (!areApart(textBox(a), textBox(b)))
      overlaps.push((a.textContent || 'drawing') + ' and ' + (b.textContent || 'drawing'));
  }));
}
const outside = visible('main *').filter(e => !e.closest('.scroll, pre, svg') && box(e).right > innerWidth + 0.5)
  .map(e => e.className + ' ' + e.textContent.slice(0, 40));

const channels = color => color.match(/[\d.]+/g).map(Number);
const luminance = color => {
  const [r, g, b] = channels(color).slice(0, 3).map(c => c / 255)
    .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const background = e => {
  for (; e; e = e.parentElement) {
    const color = getComputedStyle(e).backgroundColor;
    if (channels(color)[3] !== 0)
      return color;
  }
  return 'rgb(255, 255, 255)';
};
const contrast = (e, color) => {
  const [a, b] = [luminance(color), luminance(background(e))];
  return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
};
const faint = [];
let looked = 0;
for (const e of visible('main, main *')) {
  if ([...e.childNodes].some(n => n.nodeType === 3 && n.data.trim())) {
    ++looked;
    if (contrast(e, getComputedStyle(e).color) < 4.5)
      faint.push(e.tagName + '.' + e.className + ' ' + contrast(e, getComputedStyle(e).color).toFixed(2));
  }
}
for (const e of document.querySelectorAll('figure path:not(.grid):not(.mark.command):not(.mark.event)')) {
  ++looked;
  if (contrast(e, getComputedStyle(e).stroke) < 3)
    faint.push('path.' + e.getAttribute('class') + ' ' + contrast(e, getComputedStyle(e).stroke).toFixed(2));
}
const table = box(document.querySelector('#peaks').parentElement);
const seen = {
  width: innerWidth, needed: document.documentElement.scrollWidth,
  isDark: matchMedia('(prefers-color-scheme: dark)').matches,
  badges: visible('.badge').length, levels: visible('.level').length, looked,
  overlaps, outside, faint,
  table: [table.left, table.right, table.bottom],
};
)";

QString joined(const QJsonObject &seen, const char *list)
{
    QStringList texts;
    const QJsonArray array = seen.value(QLatin1String(list)).toArray();
    for (const QJsonValue &text : array)
        texts << text.toString();
    return texts.join(QLatin1Char('\n'));
}

/// The example with long names, limits that are close together, and a command and an event every moment.
Recording crowdedRecording()
{
    using rehearsal::Limit;
    using rehearsal::Mark;
    Recording recording = exampleRecording();
    const QString name = QStringLiteral("commissioning_of_the_inner_tracker").repeated(4);
    recording.files.front().name = QStringLiteral("/home/operators/") + name + QStringLiteral(".txt");
    for (rehearsal::Finding &finding : recording.failures)
        finding.file = recording.files.front().name;
    rehearsal::ChannelRecord &channel = recording.channels.front();
    for (const char *text : {"*.voltage<=810 V", "*.voltage<=820 V", "*.voltage<=2 kV", "*.current<=1 mA"}) {
        Limit limit;
        QString error;
        if (!rehearsal::parseLimit(QLatin1String(text), limit, error))
            qFatal("%s", qPrintable(error));
        channel.limits.append(recording.limits.size());
        recording.limits.append(limit);
    }
    channel.controller = name;
    channel.controllerText = name;
    channel.marks.clear();
    constexpr int Marks = 400;
    for (int i = 0; i <= Marks; ++i) {
        const double time = recording.duration * i / Marks;
        recording.requests.push_back(recording.requests.front());
        if (i % 60 == 9)
            recording.requests.back().outcome = QStringLiteral("refused");
        const auto request = static_cast<int>(recording.requests.size()) - 1;
        channel.marks.push_back({Mark::Command, time, request, QStringLiteral("Control.on 1")});
        channel.marks.push_back({i % 50 == 7 ? Mark::Error : Mark::Event, time, -1, QStringLiteral("Event")});
    }
    return recording;
}

} // namespace

/// How a report looks in a real browser.
class TestReportLayout : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

    QString write(const QByteArray &page)
    {
        const QString path = dir.filePath(QStringLiteral("page.html"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(page) != page.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QByteArray lookedAt(const Recording &recording, int width)
    {
        return browser::framed(rehearsal::reportPage(recording).toUtf8(), Look, width, Height);
    }

    QJsonObject look(const Recording &recording, int width, bool isDark)
    {
        Shown shown;
        const QString scheme = QStringLiteral("--blink-settings=preferredColorScheme=%1").arg(isDark ? 0 : 1);
        show(write(lookedAt(recording, width)), 1400, shown,
             {QStringLiteral("--dump-dom"), QStringLiteral("--hide-scrollbars"), scheme});
        return browser::seen(shown);
    }

    /// How bright the page is there.
    static int brightness(const QImage &image, double x, double y)
    {
        return qGray(image.pixel(qRound(x), qRound(y)));
    }

private Q_SLOTS:
    void nothingLiesOnAnything_data()
    {
        QTest::addColumn<int>("width");
        QTest::newRow("on a large screen") << 1400;
        QTest::newRow("on the narrowest with a wide strip") << 961;
        QTest::newRow("on the widest with a narrow strip") << 960;
        QTest::newRow("on half a screen") << 700;
        QTest::newRow("on a phone") << 400;
    }

    void nothingLiesOnAnything()
    {
        QFETCH(int, width);
        const QJsonObject seen = look(crowdedRecording(), width, false);
        QCOMPARE(seen.value(QLatin1String("width")).toInt(), width);
        QVERIFY(seen.value(QLatin1String("badges")).toInt() > 5);
        QCOMPARE(seen.value(QLatin1String("levels")).toInt(), 7);
        QCOMPARE(joined(seen, "overlaps"), QString());
        QCOMPARE(joined(seen, "outside"), QString());
        QCOMPARE(seen.value(QLatin1String("needed")).toInt(), width);
    }

    // As WCAG AA asks: 4.5 for texts, 3 for lines.
    void nothingIsFaint_data()
    {
        QTest::addColumn<bool>("isDark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    void nothingIsFaint()
    {
        QFETCH(bool, isDark);
        const QJsonObject seen = look(exampleRecording(), 1200, isDark);
        QCOMPARE(seen.value(QLatin1String("isDark")).toBool(), isDark);
        QVERIFY(seen.value(QLatin1String("looked")).toInt() > 100);
        QCOMPARE(joined(seen, "faint"), QString());
    }

    // A table that is wider than the page is shaded where it goes on.
    void aTableShowsThatItGoesOn_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("goesOn");
        QTest::newRow("on a screen") << 1200 << false;
        QTest::newRow("on a phone") << 400 << true;
    }

    void aTableShowsThatItGoesOn()
    {
        QFETCH(int, width);
        QFETCH(bool, goesOn);
        const QJsonArray table =
            look(exampleRecording(), width, false).value(QLatin1String("table")).toArray();
        QCOMPARE(table.size(), 3);
        const QString picture = dir.filePath(QStringLiteral("page.png"));
        Shown shown;
        show(write(lookedAt(exampleRecording(), width)), width, shown,
             {QStringLiteral("--screenshot=") + picture, QStringLiteral("--hide-scrollbars"),
              QStringLiteral("--window-size=%1,%2").arg(width).arg(Height)});
        const QImage image(picture);
        QVERIFY(image.height() > table.at(2).toDouble());
        // In the space beneath the last row's text.
        constexpr double Edge = 4;
        const double y = table.at(2).toDouble() - Edge;
        const int left = brightness(image, table.at(0).toDouble() + Edge, y);
        const int right = brightness(image, table.at(1).toDouble() - Edge, y);
        QCOMPARE(left, 255);
        QVERIFY2(goesOn ? right < left - 20 : right == left, qPrintable(QString::number(right)));
    }
};

QTEST_GUILESS_MAIN(TestReportLayout)
#include "tst_report_layout.moc"
