#!/usr/bin/env bash
# Runs both fuzzing targets at once for a bounded time, from the kept inputs.
#   bash fuzz/run_fuzzers.sh BUILD_DIR [SECONDS]     (default 60)
# BUILD_DIR holds a build configured with -DCYCBCR_BUILD_FUZZERS=ON and the
# targets built (cmake --build BUILD_DIR --target cycbcr_fuzzers). New inputs
# go to BUILD_DIR/fuzz-work/<target>/, never into the repository. A crash,
# leak or sanitizer report fails the run and leaves the input that caused it
# in BUILD_DIR/fuzz-work/<target>/crash-* (named in the log); copy it into
# fuzz/regress/<target>/ with the fix so ctest replays it from then on.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "$1" && pwd)
seconds=${2:-60}

declare -A pids
for target in convert command; do
    exe=$build/fuzz/cycbcr_fuzz_$target
    work=$build/fuzz-work/$target
    mkdir -p "$work/corpus"
    kept=()
    for dir in "$root/fuzz/corpus/$target" "$root/fuzz/regress/$target"; do
        [[ -d $dir ]] && kept+=("$dir")
    done
    dict=()
    [[ -f $root/fuzz/$target.dict ]] && dict=(-dict="$root/fuzz/$target.dict")
    # The first corpus directory takes the new inputs; the kept ones are read.
    ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
        "$exe" -max_total_time="$seconds" -timeout=30 -max_len=4096 -close_fd_mask=2 \
        -print_final_stats=1 -artifact_prefix="$work/" "${dict[@]}" \
        "$work/corpus" "${kept[@]}" >"$work/log" 2>&1 &
    pids[$target]=$!
done

status=0
for target in convert command; do
    work=$build/fuzz-work/$target
    if wait "${pids[$target]}"; then
        echo "fuzz $target: $(grep -E '^Done [0-9]+ runs' "$work/log" || echo 'finished')"
    else
        status=1
        echo "fuzz $target: FAILED; the end of its log ($work/log):"
        tail -n 60 "$work/log"
        shopt -s nullglob
        for input in "$work"/crash-* "$work"/leak-* "$work"/timeout-* "$work"/oom-*; do
            echo "fuzz $target: failing input kept at $input"
        done
    fi
done
exit "$status"
