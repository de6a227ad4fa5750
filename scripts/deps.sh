#!/usr/bin/env bash
# Installs the Debian packages one use of the repository needs, when any is
# missing. Safe to run again: it does nothing when all are there.
#
#     bash scripts/deps.sh run     building the library and the cycbcr command
#                                  (scripts/run.sh)
#     bash scripts/deps.sh test    that, and what the tests and benchmarks need
#                                  (scripts/test.sh, .ci/run); the default
#     bash scripts/deps.sh --list PROFILE
#                                  prints the profile's packages, installs nothing
set -euo pipefail

# Building the library and the command: a C++20 compiler, CMake and Ninja, and
# libpng for the pictures 'cycbcr preview' writes. Nothing else is looked for
# when tests and benchmarks are off (-DCYCBCR_BUILD_TESTS=OFF
# -DCYCBCR_BUILD_BENCHMARKS=OFF).
run_packages=(
    cmake ninja-build g++
    libpng-dev
)

# The test suite and the benchmarks: GoogleTest, Google Benchmark, the peer
# libraries the tests read frames with (libyuv, FFmpeg's libavcodec, libavutil
# and libswscale), pkg-config to find them and to build the install test's
# consumer, binutils for the object checks, python3 for the command's tests.
test_packages=(
    pkgconf binutils python3
    libgtest-dev libgmock-dev libbenchmark-dev
    libyuv-dev libavcodec-dev libavutil-dev libswscale-dev
)

# Tools that steps of continuous integration (.ci/run) need beyond the test
# suite: clang and its runtime libraries for the fuzzing targets (libFuzzer and
# the sanitizers); installed with the test profile.
ci_packages=(clang libclang-rt-14-dev)

list=0
if [[ ${1:-} == --list ]]; then
    list=1
    shift
fi
profile=${1:-test}
case $profile in
    run) packages=("${run_packages[@]}") ;;
    test) packages=("${run_packages[@]}" "${test_packages[@]}" "${ci_packages[@]}") ;;
    *)
        echo "usage: deps.sh [--list] [run|test]" >&2
        exit 2
        ;;
esac
if ((list)); then
    printf '%s\n' "${packages[@]}"
    exit 0
fi

if ! command -v dpkg-query >/dev/null 2>&1; then
    echo "deps: not a Debian system; install by hand: ${packages[*]}" >&2
    exit 0
fi

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$p")
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

echo "deps: installing ${missing[*]}"
as_root=()
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "deps: need root (or sudo) to install: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}"
