#!/usr/bin/env bash
# The state several threads share through the converters is read and written
# only through single untorn accesses:
#  - the processor level, gdwProcType, only through load_level() and
#    store_level() of frame/entry.h (relaxed atomics), apart from its definition;
#  - the band counter only through qbOSInterlocked* once band threads exist.
# Usage: check_shared_state.sh SOURCE_ROOT
set -u -o pipefail
root=$1
failed=0
fail() {
    echo "FAIL: $*"
    failed=1
}
dirs=()
for d in frame platform ycbcr8 ycbcr10 torgb fromrgb scale; do
    [[ -d $root/$d ]] && dirs+=("$root/$d")
done
[[ ${#dirs[@]} -gt 0 ]] || fail "no library sources under $root"

# Every line naming the level, comments left out.
while IFS= read -r hit; do
    file=${hit%%:*}
    text=${hit#*:*:}
    [[ $text =~ ^[[:space:]]*// ]] && continue
    case $file in
        */frame/entry.h)
            [[ $text == *"__atomic_load_n(&gdwProcType, __ATOMIC_RELAXED)"* ||
               $text == *"__atomic_store_n(&gdwProcType, level, __ATOMIC_RELAXED)"* ]] ||
                fail "plain access to the level: $hit"
            ;;
        */frame/proc_level.cpp)
            [[ $text == *"uint32_t gdwProcType = cycbcr::kLevelUnset;"* ]] ||
                fail "plain access to the level: $hit"
            ;;
        *) fail "the level named outside frame/entry.h: $hit" ;;
    esac
done < <(grep -rn -w --include='*.cpp' --include='*.h' gdwProcType "${dirs[@]}")

# entry.h has both helpers.
grep -q "__atomic_load_n(&gdwProcType, __ATOMIC_RELAXED)" "$root/frame/entry.h" ||
    fail "load_level() is not a relaxed atomic load"
grep -q "__atomic_store_n(&gdwProcType, level, __ATOMIC_RELAXED)" "$root/frame/entry.h" ||
    fail "store_level() is not a relaxed atomic store"

# The band runner: after its one initial store (before any band thread
# starts), the counter is touched only through the interlocked calls.
bands=$root/ycbcr10/bands.h
if [[ -f $bands ]]; then
    while IFS= read -r hit; do
        text=${hit#*:}
        [[ $text =~ ^[[:space:]]*// ]] && continue
        [[ $text == *qbOSInterlocked* || $text == *"volatile int32_t"* ||
           $text == *"pending = 1;"* || $text == *"job.pending = &pending"* ]] ||
            fail "band counter touched outside the interlocked calls: $hit"
    done < <(grep -n -w "pending" "$bands")
    [[ $(grep -c "pending = 1;" "$bands") -le 1 ]] || fail "more than one plain store to the counter"
fi
grep -q "__atomic_load_n(counter, __ATOMIC_RELAXED)" "$root/platform/threads.h" ||
    fail "qbOSInterlockedRead is not an atomic load"

[[ $failed -eq 0 ]] && echo "shared state: every access atomic"
exit $failed
