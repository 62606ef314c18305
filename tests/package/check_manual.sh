#!/usr/bin/env bash
# Compares the manual page with what the program says of itself: each has every option of the other.
# Usage: check_manual.sh PROGRAM PAGE [SUB_COMMAND...]
set -euo pipefail

program=$1
page=$2
shift 2

if ! complaints=$(mandoc -T lint -W warning "$page"); then
    printf 'FAILED: the page is not well written:\n%s\n' "$complaints"
    exit 1
fi

options_in() {
    grep -oE '(^|[^A-Za-z0-9-])--[a-z][a-z-]*' | grep -oE -- '--[a-z-]+' | sort -u
}

# Beginnings of lines only: the explanations name options as well, but need not.
said=$({
    "$program" --help </dev/null
    for command in "$@"; do
        "$program" "$command" --help </dev/null
    done
} | grep -E '^ +-' | options_in)
written=$(mandoc -T ascii "$page" | sed 's/.\x08//g' | options_in)
if [[ -z $said || $said != "$written" ]]; then
    printf 'FAILED: --help (<) and the manual page (>) have different options:\n'
    diff <(echo "$said") <(echo "$written") || true
    exit 1
fi
echo "$(wc -l <<<"$said") options, each in both"
