#!/usr/bin/env bash
# kfaults extract slab by slab (--memory-budget) against the same run in memory.
#
#   bench/outofcore_bench.sh KFAULTS SIZE BUDGET RUNS [WORKDIR] [--no-memory-run]
#
# Writes the built-in likelihood volume of SIZE^3 voxels (kfaults synth) into WORKDIR
# (default a new folder under /tmp), then alternates RUNS times: `extract --no-pictures`
# of its block file in memory and with `--memory-budget BUDGET`, and of its raw file
# (trace order, big-endian) with the budget. Each run's peak resident memory is read from
# /usr/bin/time (maximum resident set) and its report.json; the fault volumes of every
# run are compared byte for byte with the first in-memory one. Prints per run, then the
# min and median of: wall time, the time ratio slab/memory, peak memory / budget and
# peak memory / volume. --no-memory-run skips the runs in memory (for volumes that do not
# fit), comparing the slab runs with each other. WORKDIR is removed at the end.
set -euo pipefail
kfaults=$1 size=$2 budget=$3 runs=$4
work=${5:-$(mktemp -d /tmp/outofcore_bench.XXXXXX)}
memoryRun=1
[[ "${6:-}" == "--no-memory-run" ]] && memoryRun=0
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"
"$kfaults" synth --size "$size" -o "$work/in" > /dev/null
rm -f "$work/in/planted_ids.bloc"
volumeBytes=$((size * size * size * 4))

# run NAME ARGS...: one extraction, its "seconds peakBytes" appended to $work/NAME.
run() {
    local name=$1; shift
    rm -rf "$work/out"
    /usr/bin/time -f "%e %M" -o "$work/time" "$kfaults" extract --no-pictures -o "$work/out" "$@" > /dev/null
    read -r seconds kilobytes < "$work/time"
    echo "$seconds $((kilobytes * 1024))" >> "$work/$name"
    if [[ ! -f "$work/reference.bloc" ]]; then
        cp "$work/out/fault_volume.bloc" "$work/reference.bloc"
    elif ! cmp -s "$work/out/fault_volume.bloc" "$work/reference.bloc"; then
        echo "$name: the fault volume differs from the first run's" >&2
        exit 1
    fi
    printf '%-10s %8.2f s  peak %6.0f MiB\n' "$name" "$seconds" "$(echo "$kilobytes / 1024" | bc -l)"
}

for ((k = 0; k < runs; ++k)); do
    [[ $memoryRun == 1 ]] && run memory -i "$work/in/likelihood.bloc"
    run slabs_bloc --memory-budget "$budget" -i "$work/in/likelihood.bloc"
    run slabs_raw --memory-budget "$budget" -i "$work/in/likelihood.float32.raw" --size "$size" "$size" "$size" \
        --byte-order big
done

budgetBytes=$(python3 -c "
import re,sys
m=re.fullmatch(r'([0-9.]+)([kmgt]?)', sys.argv[1].lower())
print(int(float(m.group(1)) * 1024 ** ('kmgt'.index(m.group(2)) + 1 if m.group(2) else 0)))" "$budget")
python3 - "$work" "$budgetBytes" "$volumeBytes" "$memoryRun" <<'PY'
import statistics, sys
work, budget, volume, memoryRun = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4] == "1"
def load(name):
    return [tuple(map(float, l.split())) for l in open(f"{work}/{name}")]
def line(label, values, unit=""):
    print(f"{label:42s} min {min(values):8.3f}{unit}  median {statistics.median(values):8.3f}{unit}")
memory = load("memory") if memoryRun else None
if memory:
    line("memory: seconds", [t for t, _ in memory])
    line("memory: peak / volume", [p / volume for _, p in memory])
for name in ("slabs_bloc", "slabs_raw"):
    runs = load(name)
    line(f"{name}: seconds", [t for t, _ in runs])
    line(f"{name}: peak / budget", [p / budget for _, p in runs])
    line(f"{name}: peak / volume", [p / volume for _, p in runs])
    if memory:
        line(f"{name}: time / memory run (same round)", [s[0] / m[0] for s, m in zip(runs, memory)])
print("fault volumes identical in every run")
PY
