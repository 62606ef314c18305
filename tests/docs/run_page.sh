#!/usr/bin/env bash
# Runs what a page tells its readers to type: each block that is fenced as "sh", by itself and from the first to the
# last, until one fails. Blocks that cannot be run here are fenced as something else: console, text, bat.
# Usage: run_page.sh PAGE FOLDER HOME
#   FOLDER  where the reader is at the beginning of each block
#   HOME    the reader's home, which is emptied first
set -euo pipefail

page=$1
folder=$2
home=$3
rm -rf "$home"
mkdir -p "$home/.blocks"

# A file per block, named after the line of its first command.
awk -v blocks="$home/.blocks" '
    /^```/ { if (file != "") { close(file); file = "" } else if (!other) { if ($1 == "```sh") file = sprintf("%s/%05d", blocks, NR + 1); else other = 1 } else other = 0; next }
    file != "" { print > file }' "$page"

count=0
for block in "$home"/.blocks/*; do
    [[ -f $block ]] || break
    line=$((10#${block##*/}))
    echo "== $page:$line"
    status=0
    (cd "$folder" && HOME=$home bash -euo pipefail "$block" </dev/null) || status=$?
    if ((status != 0)); then
        printf 'FAILED: %s:%s, exit code %s:\n%s\n' "$page" "$line" "$status" "$(<"$block")"
        exit 1
    fi
    count=$((count + 1))
done
if ((count == 0)); then
    echo "FAILED: $page has no block to run"
    exit 1
fi
echo "$page: $count blocks"
