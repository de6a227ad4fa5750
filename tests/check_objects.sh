#!/usr/bin/env bash
# Checks the built objects and the shared library's export list:
#  - only *_avx2 objects may use ymm or zmm registers;
#  - *_avx2 objects define no weak code (the linker may keep their copy of an
#    inline function for the plain files too, putting AVX2 code on a plain
#    path) and no static initializer (it would run on every processor);
#  - libcycbcr.so exports every cycbcr_* function of the public header,
#    gdwProcType and _fixPitch, and none of the internals.
# Usage: check_objects.sh LIBRARY HEADER OBJECT...  (objects may come as one ;-list)
set -u -o pipefail
lib=$1
header=$2
shift 2
failed=0
fail() {
    echo "FAIL: $*"
    failed=1
}

objects=()
for arg in "$@"; do
    IFS=';' read -ra parts <<<"$arg"
    objects+=("${parts[@]}")
done

plain=0
avx2=0
avx2_with_ymm=0
for obj in "${objects[@]}"; do
    [[ -n $obj ]] || continue
    [[ -f $obj ]] || { fail "missing object $obj"; continue; }
    name=${obj##*/}
    if [[ $name == *_avx2.cpp.o ]]; then
        avx2=$((avx2 + 1))
        [[ $(objdump -d "$obj") == *%ymm* ]] && avx2_with_ymm=$((avx2_with_ymm + 1))
        syms=$(nm "$obj") || fail "nm failed on $name"
        # Weak code only: weak and unique objects (V, u: inline constants, the
        # values of class-type template arguments, the unwinder's
        # DW.ref.__gxx_personality_v0) are data, never run.
        weak=$(awk 'NF >= 2 && $(NF - 1) == "W" { print $NF }' <<<"$syms")
        [[ -z $weak ]] || fail "$name defines weak code:" $(head -n 5 <<<"$weak")
        [[ $syms != *_GLOBAL__sub_I* ]] || fail "$name has a static initializer"
    else
        plain=$((plain + 1))
        vec=$(objdump -d "$obj" | grep -E '%[yz]mm' || true)
        vec=$(head -n 3 <<<"$vec")
        [[ -z $vec ]] || fail "$name uses AVX registers outside an _avx2 file:"$'\n'"$vec"
    fi
done
((plain > 0 && avx2 > 0)) || fail "expected plain and _avx2 objects, got $plain and $avx2"
((avx2_with_ymm > 0)) || fail "no _avx2 object shows a ymm register: is objdump working?"

exports=$(nm -D --defined-only "$lib" | awk '{ sub(/@.*/, "", $NF); print $NF }' | sort -u)
declared=$( {
    grep -oE '\bcycbcr_[A-Za-z0-9_]+[[:space:]]*\(' "$header" | tr -d '( \t'
    grep -oE 'CYCBCR_CONVERTER\(cycbcr_[A-Za-z0-9_]+\)' "$header" | sed -E 's/.*\((.*)\)/\1/'
} | sort -u)
count=$(wc -w <<<"$declared")
((count >= 30)) || fail "found only $count cycbcr_* declarations in $header"
for sym in $declared gdwProcType _Z9_fixPitchjjRj; do
    grep -qx "$sym" <<<"$exports" || fail "$sym is not exported"
done
internal=$(grep -E 'CPUFeatureFlags|QBAlloc|QBFree|CopyMemoryFast|EndianConvertWord|6cycbcr' \
    <<<"$exports")
[[ -z $internal ]] || fail "internal names exported:"$'\n'"$internal"

echo "checked $plain plain and $avx2 _avx2 objects, $count declared names"
exit $failed
