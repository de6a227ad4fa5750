#!/usr/bin/env bash
# Builds everything in build/ and runs the whole test suite.
set -euo pipefail
# shellcheck source=scripts/build_common.sh
source "$(dirname "${BASH_SOURCE[0]}")/build_common.sh"

bash "$root/scripts/deps.sh"
configure build -DCYCBCR_BUILD_TESTS=ON
cmake --build "$root/build" --parallel "$jobs"
ctest --test-dir "$root/build" --output-on-failure -j2
