#!/usr/bin/env bash
# Builds everything in build/ (library, command, tests, benchmarks) and runs
# the whole test suite. The options are given in full because scripts/run.sh
# configures the same directory without tests and benchmarks.
set -euo pipefail
# shellcheck source=scripts/build_common.sh
source "$(dirname "${BASH_SOURCE[0]}")/build_common.sh"

bash "$root/scripts/deps.sh" test
configure build -DCYCBCR_BUILD_TESTS=ON -DCYCBCR_BUILD_BENCHMARKS=ON -DCYCBCR_BUILD_TOOLS=ON
cmake --build "$root/build" --parallel "$jobs"
ctest --test-dir "$root/build" --output-on-failure -j2
