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

# python_in FOLDER: what passes for an installed Python 3.7 there.
python_in() {
    mkdir -p "$1/include/python3.7m"
    touch "$1/include/python3.7m/Python.h"
}

# begin NAME: a case of its own, with a fake PATH that holds harmless tools only, and a home with a Python in it.
begin() {
    name=$1
    rm -rf "${scratch:?}/bin" "${scratch:?}/home"
    mkdir "$scratch/bin"
    python_in "$scratch/home/.pyenv/versions/3.7.9"
    environment=("PATH=$scratch/bin" "HOME=$scratch/home")
    local tool
    for tool in bash cat dirname env grep mktemp nproc rm tail tee; do
        ln -s "$(PATH=$real_path command -v "$tool")" "$scratch/bin/$tool"
    done
}

call() {
    cd "$scratch/tree" && env -i "${environment[@]}" bash "tools/$1" "${@:2}" </dev/null
}

# run SCRIPT ARGUMENT...: leaves `output` (both streams) and `status`.
run() {
    status=0
    output=$(call "$@" 2>&1) || status=$?
}

# run_into_pipe SCRIPT ARGUMENT...: the same, with nothing but the standard output.
run_into_pipe() {
    status=0
    output=$(call "$@" 2>/dev/null) || status=$?
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

# Python. Its source release is one of ours that builds in no time; what it builds is no Python either.
release=$scratch/release.tar
mkdir -p "$scratch/Python-3.7.16"
cat >"$scratch/Python-3.7.16/configure" <<'CONFIGURE'
#!/bin/bash
echo "configure $*" >>"$HOME/what-ran"
for argument in "$@"; do
    [[ $argument != --prefix=* ]] || echo "${argument#--prefix=}" >prefix
done
CONFIGURE
chmod +x "$scratch/Python-3.7.16/configure"
tar -cf "$release" -C "$scratch" Python-3.7.16
checksum=$(sha256sum "$release")
checksum=${checksum%% *}

# A prefix for `make install`, and the interpreter that it gets.
make_that_installs='
if [[ $1 != install ]]; then
    for ((i = 0; i < 120; i++)); do echo "gcc -c file$i.c"; done
    exit 0
fi
prefix=${2#DESTDIR=}$(cat prefix)
mkdir -p "$prefix/include/python3.7m" "$prefix/bin"
echo "#!/bin/bash" >"$prefix/bin/python3.7"
echo "$INTERPRETER_BODY" >>"$prefix/bin/python3.7"
chmod +x "$prefix/bin/python3.7"
: >"$prefix/include/python3.7m/Python.h"'

# begin_without_python NAME: packages are there, Python is not, and its release can be had.
begin_without_python() {
    begin_with_packages "$1"
    rm -rf "${scratch:?}/home"
    mkdir "$scratch/home"
    local tool
    for tool in awk chmod mkdir mv sha256sum tar; do
        ln -s "$(PATH=$real_path command -v "$tool")" "$scratch/bin/$tool"
    done
    fake curl '
while (($# > 0)); do
    case $1 in
        --output) output=$2; shift ;;
        file://*) address=$1 ;;
    esac
    shift
done
cat "${address#file://}" >"$output"'
    fake make "$make_that_installs"
    environment+=("TERMINAL_PYTHON_SOURCE=file://$release" "TERMINAL_PYTHON_SHA256=$checksum"
        "INTERPRETER_BODY=exit 0")
    prefix=$scratch/home/.cache/tarn-terminal/python-3.7.16
}

leaves_no_python() {
    [[ ! -e $prefix ]] || complain "nothing expected in $prefix"
    [[ -z $(find "$scratch/home" -name 'build.*') ]] || complain "the build left its folder"
}

for place in pyenv PYENV_ROOT Python3_ROOT_DIR cache XDG_CACHE_HOME PATH; do
    begin_without_python "a Python by way of $place"
    case $place in
        pyenv) python_in "$scratch/home/.pyenv/versions/3.7.16" ;;
        PYENV_ROOT) python_in "$scratch/home/other/versions/3.7.1" ;;
        Python3_ROOT_DIR) python_in "$scratch/home/other" ;;
        cache) python_in "$prefix" ;;
        XDG_CACHE_HOME) python_in "$scratch/home/other/tarn-terminal/python-3.7.16" ;;
        PATH) fake python3.7 'exit 0' ;;
    esac
    [[ $place != *_* ]] || environment+=("$place=$scratch/home/other")
    run bootstrap
    returns 0
    [[ -z $output ]] || complain "silence expected"
done

begin_without_python "no Python"
run bootstrap --run
returns 0
says "building 3.7.16"
says "Fetching file://$release"
says "    100 files compiled"
says "Python 3.7.16 is in $prefix"
[[ -e $prefix/include/python3.7m/Python.h ]] || complain "a Python expected in $prefix"
[[ $(cat "$scratch/home/what-ran") == *"--enable-shared"*"-rpath,$prefix/lib"* ]] || complain "a shared library expected"
name="a Python that was built before"
run bootstrap
returns 0
[[ -z $output ]] || complain "silence expected"

begin_without_python "no Python, and the PATH's cannot be built with"
fake python3.7 'exit 1'
run bootstrap
returns 0
says "building 3.7.16"

begin_without_python "no Python, and a folder that once held one"
mkdir -p "$scratch/home/.pyenv/versions/3.7.16/lib"
run bootstrap
returns 0
says "building 3.7.16"

begin_without_python "no Python, and packages to build it with are missing"
fake dpkg-query '
for package in "${@:3}"; do [[ $package == libssl-dev ]] || echo "|$package=installed|"; done'
fake apt-get 'echo "apt-get $*"'
fake sudo "$as_root"
run bootstrap
returns 0
says "Missing: libssl-dev"
says "Python 3.7.16 is in"
name="a Python, and packages to build one with are missing"
run bootstrap
returns 0
[[ -z $output ]] || complain "silence expected"

begin_without_python "a source release that somebody changed"
environment+=("TERMINAL_PYTHON_SHA256=")
run bootstrap
returns 1
says "FAILED: Checking"
says "8338f0c2222d847e904c955369155dc1beeeed806e8d5ef04b00ef4787238bfd"
[[ ! -e $scratch/home/what-ran ]] || complain "it must not run"
leaves_no_python

begin_without_python "a source release out of reach"
fake curl 'echo "Could not resolve host"; exit 6'
run bootstrap
returns 6
says "Could not resolve host"
says "FAILED: Fetching"
says "TERMINAL_PYTHON_SOURCE=file:///"
leaves_no_python

begin_without_python "a Python that does not compile"
fake make 'echo "gcc -c ssl.c"; echo "ssl.c:1: no such header"; exit 2'
run bootstrap
returns 2
says "ssl.c:1: no such header"
says "FAILED: Compiling Python"
says "To mend it"
says "python-3.7.16.log"
leaves_no_python

begin_without_python "a Python whose modules are incomplete"
environment+=('INTERPRETER_BODY=echo "No module named _ssl"; exit 1')
run bootstrap
returns 1
says "No module named _ssl"
says "FAILED: Looking for modules"
leaves_no_python

begin_without_python "no place to keep a Python"
environment=("PATH=$scratch/bin")
run bootstrap
returns 1
says "HOME"

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

begin_with_packages "packing"
fake cmake 'exit 0'
fake cpack 'echo "$@" >"$HOME/what-ran"'
fake find 'echo build/run/package/it.deb'
run package
returns 0
ends_with "==> The package is build/run/package/it.deb"
[[ $(cat "$scratch/home/what-ran") == "-G DEB "*"/build/run/"* ]] || complain "a package of the run build expected"

begin_with_packages "packing fails"
fake cmake 'exit 0'
fake cpack 'echo "no room"; exit 1'
run package
returns 1
says "no room"
says "FAILED: Packing"
says_not "The package is"

begin_with_packages "a package that is not asked for properly"
run package --quick
returns 2
says "Usage:"

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

# None of them does anything but say how it is used: there is no program that it could call.
for script in bootstrap provide_python run test package format lint fuzz benchmark; do
    begin "help from $script"
    run "$script" --help
    returns 0
    says "Usage: tools/$script"
done

begin "help before the first build"
run run --help
says "Once it is built, this lists"
says "packaging/terminal-workbench.1.in"

begin "formatting with an argument that there is not"
fake clang-format 'echo "clang-format version 14.0.6"; echo "called with $*"'
run format --chek
returns 2
says "Usage:"
says_not "called with"

workbench=$scratch/tree/build/run/workbench/app/terminal-workbench
mkdir -p "${workbench%/*}"

# workbench BODY: a workbench on which `file` is what it was told to run, `picture` where to save one.
workbench() {
    printf '#!/bin/bash\nall="${*##*/}"; all=${all#*quit-when-done }\nwhile (($# > 0)); do case $1 in --screenshot) picture=$2 ;; --run-*-file) file=$2 ;; rehearse) files="${2##*/} ${3##*/}" ;; --report) report=$2 ;; esac; shift; done\n%s\n' \
        "$1" >"$workbench"
    chmod +x "$workbench"
}

begin_with_packages "no display, and all is well"
fake cmake 'exit 0'
workbench 'echo "transcript of ${file##*/} on $QT_QPA_PLATFORM"; [[ -n $files ]] && echo "rehearsal of $files: $report" || echo x >"$picture"'
run run
returns 0
says "rehearsal of ramp_up.txt ramp_channel.py: $scratch/tree/build/rehearsal"
says "The report is $scratch/tree/build/rehearsal/report.html"
says "transcript of ramp_up.txt on offscreen"
says "The window's picture is $scratch/tree/build/workbench.png"
says "transcript of ramp_channel.py on offscreen"
says "The window's picture is $scratch/tree/build/workbench_python.png"

begin_with_packages "no display, and a controller for the command file"
fake cmake 'exit 0'
workbench 'echo "${file##*/}: $all"; echo x >"$picture"'
run run --controller bench --latency 9
returns 0
says "ramp_up.txt: --controller bench --latency 9"
says "ramp_channel.py: --latency 9"
says_not "rehearsal"

begin_with_packages "no display, and a failure in the rehearsal"
fake cmake 'exit 0'
workbench '[[ -z $files ]] || exit 1; echo x >"$picture"'
run run
returns 1
says "FAILED: Rehearsing ramp_up.txt ramp_channel.py"
says_not "The report is"

begin_with_packages "no display, and a rehearsal of other files"
fake cmake 'exit 0'
workbench 'echo "rehearsal of $files"'
run run rehearse one.txt two.py
returns 0
says "rehearsal of one.txt two.py"
says_not "ramp"

begin "no display, and a program that reads what the workbench prints"
fake apt-get 'echo "apt-get $*"'
fake dpkg-query "$some_packages_missing"
fake sudo "$as_root"
fake cmake 'echo "cmake $*"'
workbench 'echo "result of $files"'
run_into_pipe run rehearse one.txt two.py
returns 0
[[ $output == "result of one.txt two.py" ]] || complain "nothing else expected on standard output"

begin_with_packages "no display, and the Python terminal fails"
fake cmake 'exit 0'
workbench '[[ $file == *.txt ]] || exit 1; echo x >"$picture"'
run run
returns 1
says "FAILED: Running examples/scripts/ramp_channel.py in the Python terminal"

begin_with_packages "no display, and something else to do there"
fake cmake 'exit 0'
workbench 'echo "transcript of ${file##*/}"'
run run --run-python-file other.py
returns 0
says "transcript of other.py"
says_not "ramp"

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
