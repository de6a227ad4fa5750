#!/usr/bin/env bash
# Builds the library and the cycbcr command (Release, in build/), then runs the
# main job: the processor report and a conversion of the built-in colour bars.
# Arguments, if any, go to the cycbcr command instead, e.g.
#     bash scripts/run.sh convert --from YUY2 --to cyuv --size 1280x720
#     bash scripts/run.sh preview --from v210 --size 1280x720 --in a.v210 --out a.png
set -euo pipefail
# shellcheck source=scripts/build_common.sh
source "$(dirname "${BASH_SOURCE[0]}")/build_common.sh"

# Only what building the library and the command needs: no tests, no
# benchmarks, and none of their packages.
bash "$root/scripts/deps.sh" run
configure build -DCMAKE_BUILD_TYPE=Release -DCYCBCR_BUILD_TESTS=OFF \
    -DCYCBCR_BUILD_BENCHMARKS=OFF -DCYCBCR_BUILD_TOOLS=ON
cmake --build "$root/build" --parallel "$jobs" --target cycbcr_cli

tool=$root/build/tools/cycbcr
if [[ $# -gt 0 ]]; then
    exec "$tool" "$@"
fi
"$tool" cpu
echo
"$tool" convert --from UYVY --to YUY2 --size 1920x1080
"$tool" convert --from YUY2 --to cyuv --size 3840x2160
"$tool" convert --from I420 --to rgb32 --size 1920x1080 --matrix 709
