#!/usr/bin/env bash
# The README's run command builds the library and the command with the "run"
# packages of scripts/deps.sh alone. Checks that the run configuration (tests
# and benchmarks off) configures with every test-only package out of reach,
# and that the run profile lists none of them.
#
# run_profile_test.sh CMAKE REPO WORK_DIR GENERATOR
set -euo pipefail

cmake_cmd=$1 repo=$2 work=$3 generator=$4

fail() {
    echo "run profile test: $*" >&2
    exit 1
}

step() { echo "== $*"; }

step "the run profile lists no test package"
run_list=$(bash "$repo/scripts/deps.sh" --list run)
test_list=$(bash "$repo/scripts/deps.sh" --list test)
for p in $run_list; do
    grep -qx "$p" <<<"$test_list" || fail "'$p' is in the run profile but not the test profile"
done
for p in libgtest-dev libgmock-dev libbenchmark-dev libyuv-dev libavcodec-dev libavutil-dev \
    libswscale-dev python3; do
    grep -qx "$p" <<<"$test_list" || fail "the test profile lacks $p"
    grep -qx "$p" <<<"$run_list" && fail "the run profile installs $p, which only the tests need"
done
bash "$repo/scripts/deps.sh" --list nonsense >/dev/null 2>&1 &&
    fail "deps.sh takes an unknown profile"

step "configure as scripts/run.sh does, with the test packages out of reach"
rm -rf "$work"
# A REQUIRED find of a disabled package is an error, and a quiet one finds
# nothing: either way the configuration must not need them.
"$cmake_cmd" -S "$repo" -B "$work" -G "$generator" -DCMAKE_BUILD_TYPE=Release \
    -DCYCBCR_BUILD_TESTS=OFF -DCYCBCR_BUILD_BENCHMARKS=OFF -DCYCBCR_BUILD_TOOLS=ON \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON \
    -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON -DCMAKE_DISABLE_FIND_PACKAGE_Python3=ON \
    >"$work.log" 2>&1 || { cat "$work.log"; fail "the run configuration does not configure"; }

targets=$("$cmake_cmd" --build "$work" --target help 2>/dev/null)
for t in cycbcr cycbcr_cli; do
    grep -q "^$t:" <<<"$targets" || fail "the run configuration has no $t target"
done
for t in cycbcr_bench dispatch_test; do
    grep -q "^$t:" <<<"$targets" && fail "the run configuration builds $t"
done
rm -rf "$work" "$work.log"
echo "run profile test: all checks passed"
