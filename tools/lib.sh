# shellcheck shell=bash disable=SC2034
# Shared by the scripts in this folder and by .ci/run; sourced, never run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# nproc counts the cores that this process may use, so a confined run asks for no more than it has.
jobs=$(nproc 2>/dev/null || echo 1)

# A compiler cache makes a second build quick. It is used where it is, and never asked for.
if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER:-} ]] && command -v ccache >/dev/null 2>&1; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

say() {
    printf '==> %s\n' "$*"
}

# complain WHAT HOW_TO_MEND_IT: the two things that anybody wants to know about a failure.
complain() {
    printf 'FAILED: %s\n' "$1" >&2
    printf 'To mend it: %s\n' "$2" >&2
}

# step WHAT HOW_TO_MEND_IT COMMAND...: says what is done, does it, and says how to mend it when it fails.
step() {
    local what=$1 mend=$2 status=0
    shift 2
    say "$what"
    "$@" || status=$?
    if ((status != 0)); then
        complain "$what (exit code $status)" "$mend"
    fi
    return "$status"
}

# tracked PATTERN...: leaves the files under version control in the array tracked_files. No name holds a line feed.
tracked_files=()
tracked() {
    local list
    if ! list=$(git -C "$root" ls-files -- "$@"); then
        complain "listing the files under version control" "git -C '$root' status must work"
        return 1
    fi
    tracked_files=()
    if [[ -n $list ]]; then
        mapfile -t tracked_files <<<"$list"
    fi
}

# configure_and_build PRESET [TARGET...]: incremental, in build/<preset>. It goes on after an error, to show all of them.
configure_and_build() {
    local preset=$1
    shift
    local targets=()
    if (($# > 0)); then
        targets=(--target "$@")
    fi
    step "Configuring (preset $preset, in build/$preset)" \
        "read the first error above. After a move or a change of compiler: rm -rf build/$preset, then run this again" \
        cmake -S "$root" --preset "$preset" -Wno-dev || return
    step "Building (preset $preset, $jobs at a time)" \
        "read the first error above. When only this machine is short of memory: taskset -c 0 $0" \
        cmake --build "$root/build/$preset" --parallel "$jobs" "${targets[@]}" -- -k 0
}
