#!/usr/bin/env bash
# What the scripts under tools/ say and return on the roads that no healthy machine takes. Every program that they
# would call is a fake of ours on a PATH that holds nothing else.
# Usage: test_scripts.sh SOURCE_DIR
# shellcheck disable=SC2016 # what stands in single quotes is for the fakes to expand
set -euo pipefail

source_dir=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
real_path=$PATH

# A copy, so that nothing is built or configured in the tree under test.
mkdir -p "$scratch/tree"
cp -r "$source_dir/tools" "$scratch/tree/tools"

# fake NAME BODY: a program on the fake PATH.
fake() {
    printf '#!/bin/bash\n%s\n' "$2" >"$scratch/bin/$1"
    chmod +x "$scratch/bin/$1"
}

# begin NAME: a case of its own, with a fake PATH that holds harmless tools only.
begin() {
    name=$1
    rm -rf "${scratch:?}/bin"
    mkdir "$scratch/bin"
    local tool
    for tool in bash cat dirname env grep mktemp nproc rm tail tee; do
        ln -s "$(PATH=$real_path command -v "$tool")" "$scratch/bin/$tool"
    done
}

# run SCRIPT ARGUMENT...: leaves `output` (both streams) and `status`.
run() {
    status=0
    output=$(cd "$scratch/tree" && env -i PATH="$scratch/bin" bash "tools/$1" "${@:2}" 2>&1 </dev/null) || status=$?
}

complain() {
    failures=$((failures + 1))
    printf 'FAILED: %s: %s\n--- its output, exit code %s:\n%s\n---\n' "$name" "$1" "$status" "$output"
}

returns() {
    [[ $status == "$1" ]] || complain "exit code $1 expected"
}

says() {
    [[ $output == *"$1"* ]] || complain "\"$1\" expected"
}

says_not() {
    [[ $output != *"$1"* ]] || complain "\"$1\" not expected"
}

ends_with() {
    [[ ${output##*$'\n'} == "$1" ]] || complain "last line \"$1\" expected"
}

# Packages: everything is there but the two named; what is removed and only left its settings is missing as well.
some_packages_missing='
for package in "${@:3}"; do
    case $package in
        ninja-build) ;;
        qtbase5-dev) echo "|$package=config-files|" ;;
        *) echo "|$package=installed|" ;;
    esac
done
exit 1'
all_packages_there='for package in "${@:3}"; do echo "|$package=installed|"; done'
# bash sets EUID itself and lets nobody else; who runs this test decides which road it can see.
as_root=''
((EUID == 0)) || as_root='exec "$@"'

begin "a system without apt"
run bootstrap
returns 1
says "not ruled by apt"
says "qtbase5-dev"
says "To mend it"

begin "nothing missing"
fake apt-get 'echo "apt-get was called: $*"'
fake dpkg-query "$all_packages_there"
run bootstrap
returns 0
[[ -z $output ]] || complain "silence expected"

begin "two packages missing"
fake apt-get 'echo "apt-get $* [$DEBIAN_FRONTEND]"'
fake dpkg-query "$some_packages_missing"
fake sudo "$as_root"
run bootstrap
returns 0
says "Missing: ninja-build qtbase5-dev"
says "update [noninteractive]"
says "install --no-install-recommends ninja-build qtbase5-dev [noninteractive]"
says_not "install --no-install-recommends cmake"

begin "package lists out of reach"
fake apt-get '[[ "$*" != *update* ]]'
fake dpkg-query "$some_packages_missing"
fake sudo "$as_root"
run bootstrap
returns 1
says "FAILED: Fetching the package lists"
says "To mend it: check the network"
says_not "Installing"

begin "a package that cannot be installed"
fake apt-get '[[ "$*" != *install* ]] || exit 100'
fake dpkg-query "$some_packages_missing"
fake sudo "$as_root"
run bootstrap
returns 100
says "FAILED: Installing ninja-build qtbase5-dev (exit code 100)"

begin "an option that bootstrap does not know"
run bootstrap --everything
returns 2
says "Usage:"

# From here on the packages are there.
begin_with_packages() {
    begin "$1"
    fake apt-get 'exit 1'
    fake dpkg-query "$all_packages_there"
}

begin_with_packages "configuring fails"
fake cmake 'echo "no compiler"; exit 1'
run test
returns 1
says "FAILED: Configuring (preset dev"
ends_with "0 passed, 1 failed"

begin_with_packages "building fails"
fake cmake '[[ $1 != --build ]]'
fake ctest 'echo "ctest was called"'
run test --preset asan
returns 1
says "FAILED: Building (preset asan"
says_not "ctest was called"
ends_with "0 passed, 1 failed"

begin_with_packages "all tests pass"
fake cmake 'exit 0'
fake ctest 'echo "$*"; echo "100% tests passed, 0 tests failed out of 7"'
run test -L plugin
returns 0
says "-L plugin"
ends_with "7 passed, 0 failed"

begin_with_packages "a test fails"
fake cmake 'exit 0'
fake ctest 'echo "86% tests passed, 1 tests failed out of 7"; exit 8'
run test
returns 1
ends_with "6 passed, 1 failed"

begin_with_packages "no test matches"
fake cmake 'exit 0'
fake ctest 'echo "No tests were found!!!"; exit 8'
run test -R nonsense
returns 1
ends_with "0 passed, 1 failed"

begin_with_packages "no test matches, and ctest thinks nothing of it"
fake cmake 'exit 0'
fake ctest 'echo "No tests were found!!!"'
run test -R nonsense
returns 1
ends_with "0 passed, 1 failed"

begin_with_packages "ctest dies after a summary without failures"
fake cmake 'exit 0'
fake ctest 'echo "100% tests passed, 0 tests failed out of 7"; exit 139'
run test
returns 1
ends_with "7 passed, 1 failed"

begin_with_packages "a preset that is not there"
run test --preset fast
returns 2
says "Usage:"

workbench=$scratch/tree/build/run/workbench/app/terminal-workbench
mkdir -p "${workbench%/*}"

# workbench BODY: a workbench on which `picture` is where it was told to save one.
workbench() {
    printf '#!/bin/bash\nwhile (($# > 0)); do [[ $1 != --screenshot ]] || picture=$2; shift; done\n%s\n' "$1" >"$workbench"
    chmod +x "$workbench"
}

begin_with_packages "no display, and all is well"
fake cmake 'exit 0'
workbench 'echo "transcript on $QT_QPA_PLATFORM"; echo x >"$picture"'
run run
returns 0
says "transcript on offscreen"
says "The window's picture is $scratch/tree/build/workbench.png"

begin_with_packages "no display, and the workbench fails"
fake cmake 'exit 0'
workbench 'echo "no such controller"; exit 1'
run run
returns 1
says "no such controller"
says "To mend it"
says_not "picture is"

begin_with_packages "no display, and an old picture but no new one"
fake cmake 'exit 0'
workbench 'exit 0'
echo old >"$scratch/tree/build/workbench.png"
run run
returns 1
says "left no picture"

if ((failures > 0)); then
    echo "$failures expectations failed"
    exit 1
fi
echo "All expectations were met"
