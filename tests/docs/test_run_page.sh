#!/usr/bin/env bash
# What run_page.sh makes of a page.
# shellcheck disable=SC2016 # the pages' shells expand what stands in single quotes
set -euo pipefail

run_page=$(dirname "${BASH_SOURCE[0]}")/run_page.sh
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/folder"
failures=0

# page NAME STATUS OUTPUT LINE...: a page of these lines ends so, and says the output.
page() {
    local name=$1 expected=$2 says=$3 status=0 output
    shift 3
    printf '%s\n' "$@" >"$scratch/page.md"
    output=$(bash "$run_page" "$scratch/page.md" "$scratch/folder" "$scratch/home" 2>&1) || status=$?
    if [[ $status != "$expected" || $output != *"$says"* ]]; then
        failures=$((failures + 1))
        printf 'FAILED: %s: exit code %s and "%s" expected; exit code %s:\n%s\n' \
            "$name" "$expected" "$says" "$status" "$output"
    fi
}

page "a command" 0 "hello 5" Text. '```sh' 'echo hello $((2 + 3))' '```'
page "every block" 0 "2 blocks" '```sh' true '```' and '```sh' true '```'
page "not a command" 1 "no block" '```console' '# false' '```' '```text' '```' '```' sh '```'
page "a command that fails" 1 "page.md:4, exit code 1" Text. '' '```sh' false '```'
page "one before the last that fails" 1 "page.md:2, exit code 3" '```sh' '(exit 3)' true '```'
page "a pipe that breaks" 1 "page.md:2" '```sh' 'false | cat' '```'
page "a variable without a value" 1 "page.md:2" '```sh' 'echo "$nothing"' '```'
page "what follows a failure" 1 "page.md:2" '```sh' false '```' '```sh' 'touch ran' '```'
if [[ -e $scratch/folder/ran ]]; then
    failures=$((failures + 1))
    echo "FAILED: what follows a failure was run"
fi
page "each block from the same folder" 0 "here: $scratch/folder" '```sh' 'cd /' '```' '```sh' 'echo "here: $PWD"' '```'
page "a home of its own" 0 "home: $scratch/home" '```sh' 'echo "home: $HOME"' '```'
page "nobody types answers" 0 "end of input" '```sh' 'read -r line || echo "end of input"' '```'
page "what it prints" 0 "2 blocks" '```sh' 'printf "%s\n" one two "three (3)"' '```' so '```output' 'o…' 'three (…)' '```' '```sh' true '```'
page "nothing of what is shown" 1 "page.md:2 does not print, where the page has it:"$'\n'"four" '```sh' 'echo three' '```' '```output' four '```'
page "something, and it prints nothing" 1 "has it:"$'\n'"one" '```sh' true '```' '```output' one '```'
page "an empty line that is not there" 1 "page.md:2 does not print" '```sh' 'echo one' '```' '```output' one '' '```'
page "what follows an empty line that is not there" 1 "has it" '```sh' 'echo one' '```' '```output' '' one '```'
page "an empty line that is there" 0 "1 blocks" '```sh' 'printf "one\n\ntwo\n"' '```' '```output' one '' two '```'
page "the first of two outputs" 1 "one" '```sh' 'echo two' '```' '```output' one '```' '```output' two '```'
page "another order than is shown" 1 "one" '```sh' 'echo one; echo two' '```' '```output' two one '```'
page "more in a line than is shown" 1 "has it" '```sh' 'echo one two' '```' '```output' one '```'
page "a point is a point" 1 "has it" '```sh' 'echo one' '```' '```output' 'on.' '```'
page "errors are printed too" 0 "1 blocks" '```sh' 'echo one >&2' '```' '```output' one '```'
page "output of nothing" 1 "line 1: output of nothing" '```output' one '```' '```sh' true '```'

((failures == 0))
