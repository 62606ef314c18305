#!/usr/bin/env bash
# Runs what a page tells its readers to type: each block that is fenced as "sh", by itself and from the first to the
# last, until one fails. A block that is fenced as "output" shows lines that the one before it prints, in this order;
# "…" in a line stands for anything. Blocks that cannot be run here are fenced as something else: console, text, bat.
# Usage: run_page.sh PAGE FOLDER HOME
#   FOLDER  where the reader is at the beginning of each block
#   HOME    the reader's home, which is emptied first
set -euo pipefail

page=$1
folder=$2
home=$3
blocks=$home/.blocks
rm -rf "$home"
mkdir -p "$blocks"

# A file per block, named after the line of its first command; what it prints is in one that ends in .output.
awk -v blocks="$blocks" '
    /^```/ {
        if (inside) { inside = 0; if (file != "") close(file); file = ""; next }
        inside = 1
        if ($1 == "```sh") file = last = sprintf("%s/%05d", blocks, NR + 1)
        else if ($1 == "```output" && last == "") { print "FAILED: line " NR ": output of nothing"; exit 1 }
        else if ($1 == "```output") file = last ".output"
        next
    }
    file != "" { print >> file }' "$page"

# has PRINTED EXPECTED: prints the first line that is not there where it should be, and then returns 1. PRINTED may be
# an empty file, which has no record to be told by, and the line may be empty.
has() {
    awk 'FILENAME == ARGV[1] { printed[++count] = $0; next }
        {
            pattern = $0
            gsub(/[][\\.*^$+?(){}|]/, "\\\\&", pattern)
            gsub(/…/, ".*", pattern)
            while (++at <= count && printed[at] !~ ("^" pattern "$")) ;
            if (at > count) { print; exit 1 }
        }' "$1" "$2"
}

count=0
for block in "$blocks"/*[0-9]; do
    [[ -f $block ]] || break
    line=$((10#${block##*/}))
    echo "== $page:$line"
    status=0
    (cd "$folder" && HOME=$home bash -euo pipefail "$block" </dev/null) 2>&1 | tee "$home/.printed" || status=$?
    if ((status != 0)); then
        printf 'FAILED: %s:%s, exit code %s:\n%s\n' "$page" "$line" "$status" "$(<"$block")"
        exit 1
    fi
    if [[ -f $block.output ]]; then
        if ! missing=$(has "$home/.printed" "$block.output"); then
            printf 'FAILED: %s:%s does not print, where the page has it:\n%s\n' "$page" "$line" "$missing"
            exit 1
        fi
    fi
    count=$((count + 1))
done
if ((count == 0)); then
    echo "FAILED: $page has no block to run"
    exit 1
fi
echo "$page: $count blocks"
