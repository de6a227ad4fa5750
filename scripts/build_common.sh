# shellcheck shell=bash disable=SC2034
# Sourced by the other scripts: configures the build directory named in $1
# (relative to the repository) with any further CMake arguments, and sets
# $root and $jobs.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${CYCBCR_JOBS:-$(nproc 2>/dev/null || echo 2)}

configure() {
    local dir=$root/$1
    shift
    local generator=(-G Ninja)
    # An existing build directory keeps the generator it was made with.
    [[ -f $dir/CMakeCache.txt ]] && generator=()
    cmake -S "$root" -B "$dir" "${generator[@]}" "$@"
}
