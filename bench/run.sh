#!/bin/sh
# Builds the library and the benchmarks, then runs them: every converter of a
# pair of formats in the library's list (and the AVX2 forms no converter takes)
# and every converter to RGB at 1920x1080 and 3840x2160, plain and at level 5,
# against memcpy and the peers. The summary tables of ours / memcpy, ours / peer
# (libyuv, FFmpeg) and level 5 / plain come at the end of the output. The whole
# suite takes about seven minutes on two cores.
#
#     bench/run.sh [benchmark flags...]
#
# The build directory is build-bench beside this directory unless BUILD_DIR says
# otherwise. Flags go to the benchmark binary, e.g. --benchmark_filter=3840x2160,
# --benchmark_filter='v210|012v' (the v210 family and FFmpeg),
# --benchmark_filter='rgb|RGB|memcpy' (the RGB family, libyuv and memcpy) or
# --benchmark_repetitions=3 for a quicker run (see bench/bench_main.cpp).
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=${BUILD_DIR:-$root/build-bench}

if [ ! -f "$build/build.ninja" ]; then
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCYCBCR_BUILD_TESTS=OFF -DCYCBCR_BUILD_TOOLS=OFF -DCYCBCR_BUILD_BENCHMARKS=ON
fi
ninja -C "$build" -j2 cycbcr_bench
exec "$build/bench/cycbcr_bench" "$@"
