#!/usr/bin/env bash
# Looks at a Debian package of the workbench, installs it into a root of its own, uses what is installed there without
# a display, and removes it. Nothing of the trees and of the Python that it was built from may be needed or named.
# Usage: check_package.sh PACKAGE SCRATCH_DIR SOURCE_DIR BUILD_DIR BUILD_TYPE PYTHON_ROOT
# shellcheck disable=SC2016 # $ORIGIN is the loader's
set -euo pipefail

package=${1:?}
scratch=${2:?}
source_dir=${3:?}
build_dir=${4:?}
build_type=${5:?}
python_root=${6:?}

root=$scratch/root
app=$root/usr/lib/tarn-terminal-workbench
doc=$root/usr/share/doc/tarn-terminal-workbench
failures=0

complain() {
    failures=$((failures + 1))
    printf 'FAILED: %s\n' "$*"
}

# unwanted WHAT TEXT: there should be none.
unwanted() {
    if [[ -n $2 ]]; then
        complain "$1:"$'\n'"$2"
    fi
}

rm -rf "$scratch"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/log" "$scratch/home"
touch "$root/var/lib/dpkg/status"

# What its readers see before they install it.
check_description() {
    local version depends
    version=$(dpkg-deb --field "$package" Version)
    depends=", $(dpkg-deb --field "$package" Depends),"
    [[ $(zcat "$doc/changelog.Debian.gz" | head -n 1) == "tarn-terminal-workbench ($version) "* ]] ||
        complain "the changes do not begin with version $version"
    workbench --version
    says "terminal-workbench ${version%-*}"
    local name
    for name in fonts-dejavu-core libc6 libqt5core5a libqt5gui5 libqt5widgets5 libsqlite3-0 libssl3; do
        [[ $depends == *", $name"[\ ,]* ]] || complain "it does not depend on $name: $depends"
    done
    for name in libx11-6 libtk8.6 python3; do
        [[ $depends != *", $name"[\ ,]* ]] || complain "it depends on $name: $depends"
    done
    unwanted "scripts run at installation" "$(dpkg-deb --ctrl-tarfile "$package" | tar -t | grep -vE '^\./(control|md5sums)?$')"
}

check_contents() {
    local listing programs
    listing=$(dpkg-deb --contents "$package")
    unwanted "owners and modes" \
        "$(grep -vE '^(-rw-r--r--|-rwxr-xr-x|drwxr-xr-x|lrwxrwxrwx) root/root ' <<<"$listing")"
    programs=$(sed -n 's/^-rwxr-xr-x .* \.\///p' <<<"$listing")
    [[ $programs == 'usr/lib/tarn-terminal-workbench/python-3.7.1/bin/python3.7
usr/lib/tarn-terminal-workbench/terminal-workbench' ]] || complain "these are executable:"$'\n'"$programs"

    local path
    for path in bin/terminal-workbench lib/tarnControl/plugins/libTerminalPlugin.so \
        lib/tarn-terminal-workbench/scripting/orbClient.pyi share/applications/terminal-workbench.desktop \
        share/icons/hicolor/{16x16,24x24,32x32,48x48,64x64,128x128,256x256}/apps/terminal-workbench.png \
        share/icons/hicolor/scalable/apps/terminal-workbench.svg share/man/man1/terminal-workbench.1.gz \
        share/doc/tarn-terminal-workbench/{README.md,CHANGES.md,copyright,changelog.gz,docs/installing.md,examples/README.md}; do
        [[ -s $root/usr/$path ]] || complain "it lacks $path"
    done
    unwanted "what belongs to those who build" "$(cd "$root" && find . -path ./usr/include -o -name '*.a')"
    # Else the first user who may write there leaves files behind that no package owns.
    unwanted "modules that are not compiled" "$(find "$app" -name '*.py' | while read -r path; do
        [[ -s ${path%/*}/__pycache__/$(basename "$path" .py).cpython-37.pyc ]] || echo "$path"
    done)"
}

# as_pattern TEXT: an extended regular expression that matches it.
as_pattern() {
    # shellcheck disable=SC2001 # the shell's own replacement cannot do this
    sed 's/[][\.*^$+?(){}|]/\\&/g' <<<"$1"
}

# Paths of the machine that it was built on, in programs and in texts.
check_origin() {
    local folders places found
    folders=$(cd "$source_dir" && find . -mindepth 1 -maxdepth 1 -type d ! -name '.*' -printf '%f|')
    places="$(as_pattern "$source_dir")/(${folders%|})|$(as_pattern "$build_dir")"
    found=$(grep -raoE "($places)[A-Za-z0-9_./+-]*" "$root/usr"; zcat "$root"/usr/share/man/man1/* "$doc"/*.gz | grep -aoE "$places" || true)
    if [[ $build_type == Debug ]]; then
        # A failed assertion tells where it stands.
        found=$(grep -vE '\.(cpp|h)$' <<<"$found" || true)
    fi
    unwanted "paths of the machine that built it" "$found"

    local file paths
    while read -r file; do
        paths=$(readelf --dynamic --wide "$file" | sed -nE 's/.*\((RPATH|RUNPATH)\).*\[(.*)\]/\2/p')
        unwanted "$file looks for libraries in" "$(tr : '\n' <<<"$paths" | grep -vE '^(\$ORIGIN(/.*)?)?$')"
    done < <(find "$root/usr" -type f \( -name '*.so*' -o -perm /111 \))
}

# workbench ARGUMENT...: as its user starts it; leaves `output` (both streams) and `status`.
workbench() {
    status=0
    output=$(env -i HOME="$scratch/home" PATH=/usr/bin:/bin LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen \
        PREFIX="$root" FOREIGN="$source_dir:$build_dir:$python_root" \
        "$root/usr/bin/terminal-workbench" "$@" 2>&1 </dev/null) || status=$?
}

# says TEXT: of a workbench that ended well.
says() {
    if [[ $status != 0 || $output != *"$1"* ]]; then
        complain "the workbench (exit code $status) does not say \"$1\":"$'\n'"$output"
    fi
}

check_use() {
    local file=$doc/examples/command_files/read_all_module_temperatures.txt
    workbench --run-command-file "$file"
    says '"item":"Status.temperature","value":'
    local requests answers
    requests=$(grep -c '^{' "$file")
    answers=$(grep -cF '[{"trigger":"true"}]' <<<"$output")
    [[ $answers == "$requests" ]] || complain "$requests requests, $answers accepted:"$'\n'"$output"

    workbench --run-python-file "$doc/examples/scripts/list_everything.py"
    says 'Connection local: connected'
    says 'channel            set      measured         current  state'
    workbench --run-python-file "$source_dir/tests/workbench/check_runtime.py"
    says 'host: sound'
    says 'child: sound'
    workbench --help
    says --run-command-file

    output=$(env -i PYTHONPATH="$app/scripting" "$app/python-3.7.1/bin/python3.7" -c \
        'import orbClient; print(orbClient.__file__, orbClient.getItem("local", "Status.sessionId"))' 2>&1) || complain "orbClient does not load"
    [[ $output == "$app/scripting/orbClientPython_3_for_ORB.so error" ]] || complain "orbClient alone: $output"
}

dpkg_in_root() {
    PATH=$PATH:/usr/sbin:/sbin dpkg --root="$root" --force-not-root --force-depends --force-unsafe-io "$@" \
        >"$scratch/dpkg.log" 2>&1 || complain "dpkg $* ended with $?: $(cat "$scratch/dpkg.log")"
}

installed_files() {
    find "$root" -path "$root/var" -prune -o -printf '%P %s %T@\n' | sort
}

dpkg_in_root --install "$package"
check_contents
check_origin
check_description
before=$(installed_files)
check_use
unwanted "what using it leaves among the installed files" "$(diff <(echo "$before") <(installed_files))"
dpkg_in_root --purge tarn-terminal-workbench
unwanted "what is left after removing it" "$(find "$root" -mindepth 1 -path "$root/var" -prune -o -print)"

((failures == 0)) && echo "The package holds what it should, and it works."
