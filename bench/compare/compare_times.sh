#!/usr/bin/env bash
# Times every pair converter (and its _avx2 and _opt forms) and every converter
# to RGB of two libcycbcr builds at level 5, alternately, and prints the median
# GB/s of each with the ratio new / old; a converter only one build has is
# listed without a ratio. CONVERTERS (an extended regular expression) narrows
# the set.
#     bench/compare/compare_times.sh CONVERTER_TIMES OLD.so NEW.so [runs]
set -euo pipefail
tool=$1
old=$2
new=$3
runs=${4:-5}
names=$(mktemp)
out=$(mktemp -d)
trap 'rm -rf "$names" "$out"' EXIT
nm -D --defined-only "$new" | awk '{print $3}' | grep -E "${CONVERTERS:-.}" >"$names"
for i in $(seq "$runs"); do
    "$tool" "$old" 3 <"$names" >"$out/old.$i"
    "$tool" "$new" 3 <"$names" >"$out/new.$i"
done
python3 - "$out" "$runs" <<'PY'
import collections, statistics, sys
out, runs = sys.argv[1], int(sys.argv[2])
rates = collections.defaultdict(lambda: collections.defaultdict(list))
for which in ("old", "new"):
    for i in range(1, runs + 1):
        for line in open(f"{out}/{which}.{i}"):
            name, size, gbps = line.split()
            rates[(size, name)][which].append(float(gbps))
print(f"{'size':10} {'converter':24} {'old GB/s':>9} {'new GB/s':>9} {'new/old':>8}")
ratios = []
for (size, name), r in sorted(rates.items()):
    if not r["old"] or not r["new"]:
        side = "new" if r["new"] else "old"
        g = statistics.median(r[side])
        o, n = (f"{g:9.2f}", f"{'-':>9}") if side == "old" else (f"{'-':>9}", f"{g:9.2f}")
        print(f"{size:10} {name[7:]:24} {o} {n} {'-':>8}")
        continue
    o, n = statistics.median(r["old"]), statistics.median(r["new"])
    ratios.append(n / o)
    print(f"{size:10} {name[7:]:24} {o:9.2f} {n:9.2f} {n / o:8.3f}")
if ratios:
    print(f"geometric mean new/old: {statistics.geometric_mean(ratios):.3f}; "
          f"lowest {min(ratios):.3f}, highest {max(ratios):.3f}")
PY
