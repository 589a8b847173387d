#!/usr/bin/env bash
# End-to-end benchmark of the translator on generated Expedition jobs.
#
# Usage: bench/end_to_end.sh [SIZE_MB ...]        (default sizes: 1 10 30 100)
#
# Environment:
#   TNF_BENCH_DIR   where the jobs and outputs go (default /tmp/tnf_bench);
#                   never inside the repository
#   RUNS            runs per job (default 3); the table shows the median time
#   SEED            generator seed (default 1)
#   GEN_OPTIONS     further options for bench/generate_job.py, e.g. "--layers 12"
#   REGEN=1         generate the jobs again even if they are there
#   NO_BUILD=1      use the translator as it is built, without building it
#   TNF_EXE         run this translator instead (implies NO_BUILD), e.g. one
#                   built from another checkout
#
# For each size it generates a job (bench/generate_job.py), builds the Release
# translator once, runs it RUNS times under /usr/bin/time -v and prints: the
# size of Layout.hkp, the median wall time, the peak resident memory (the
# largest of the runs), the median CPU time (user + system, less disturbed
# by a busy machine than the wall time), the input rate in MB/s, and how the
# wall time grew from the size before (time ratio, size ratio and the
# exponent of that growth: 1.0 is linear, 2.0 quadratic; the last column is
# the same exponent of the CPU time).
set -euo pipefail

die() { echo "end_to_end.sh: $*" >&2; exit 1; }

REPO="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BENCH_DIR="${TNF_BENCH_DIR:-/tmp/tnf_bench}"
RUNS="${RUNS:-3}"
SEED="${SEED:-1}"
GEN_OPTIONS="${GEN_OPTIONS:-}"
EXE="${TNF_EXE:-$REPO/build/release/translators/ExpeditionToTnf/ExpeditionToTnf}"
[ -n "${TNF_EXE:-}" ] && NO_BUILD=1

if [ "$#" -gt 0 ]; then SIZES=("$@"); else SIZES=(1 10 30 100); fi
for s in "${SIZES[@]}"; do
  [[ "$s" =~ ^[0-9]+([.][0-9]+)?$ ]] || die "size '$s' is not a number of megabytes"
done
[[ "$RUNS" =~ ^[1-9][0-9]*$ ]] || die "RUNS must be a positive whole number, not '$RUNS'"

BENCH_DIR="$(realpath -m "$BENCH_DIR")"
case "$BENCH_DIR/" in
  "$REPO"/*) die "TNF_BENCH_DIR ($BENCH_DIR) lies inside the repository; choose a directory outside it" ;;
esac
mkdir -p "$BENCH_DIR" || die "cannot make $BENCH_DIR"

command -v python3 >/dev/null || die "python3 is needed for the job generator"
if [ ! -x /usr/bin/time ]; then
  die "/usr/bin/time is missing; install it with: apt-get update && apt-get install -y time"
fi

if [ "${NO_BUILD:-0}" != 1 ]; then
  echo "== building the Release translator"
  (cd "$REPO" && cmake --preset release >/dev/null && cmake --build --preset release --target ExpeditionToTnf) \
    >"$BENCH_DIR/build.log" 2>&1 || { tail -20 "$BENCH_DIR/build.log" >&2; die "the build failed (log: $BENCH_DIR/build.log)"; }
fi
[ -x "$EXE" ] || die "no translator at $EXE"

# Arithmetic in awk (no bc needed): calc EXPRESSION.
calc() { awk "BEGIN { printf \"%.9g\", $* }"; }

# Reads one key of a generator summary.
summary_value() {
  python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))[sys.argv[2]])' "$1" "$2"
}

ROWS=()
for size in "${SIZES[@]}"; do
  tag="${size}mb_seed${SEED}${GEN_OPTIONS:+_$(echo "$GEN_OPTIONS" | tr -c 'A-Za-z0-9' '_')}"
  job="$BENCH_DIR/job_$tag"
  summary="$job/generator_summary.json"
  if [ "${REGEN:-0}" = 1 ] || [ ! -f "$summary" ] || [ ! -f "$job/Layout.hkp" ]; then
    echo "== generating $size MB job in $job"
    rm -rf "$job"
    start=$(date +%s.%N)
    # shellcheck disable=SC2086
    python3 "$REPO/bench/generate_job.py" "$job" --size-mb "$size" --seed "$SEED" $GEN_OPTIONS \
      || die "the generator failed for $size MB"
    end=$(date +%s.%N)
    printf '   generated in %.1f s\n' "$(calc "$end - $start")"
  else
    echo "== reusing $job"
  fi
  layout_bytes=$(stat -c %s "$job/Layout.hkp")
  echo "   Layout.hkp $layout_bytes bytes, $(summary_value "$summary" placed_parts) parts," \
       "$(summary_value "$summary" nets) nets, $(summary_value "$summary" traces) traces," \
       "$(summary_value "$summary" vias) vias, $(summary_value "$summary" plane_voids) plane voids"

  times=()
  cpus=()
  peak=0
  out="$BENCH_DIR/out_$tag.tnf"
  for run in $(seq 1 "$RUNS"); do
    rm -f "$out"
    log="$BENCH_DIR/time_${tag}_$run.txt"
    start=$(date +%s%N)
    status=0
    /usr/bin/time -v -o "$log" "$EXE" "$job" "$out" >/dev/null 2>"$BENCH_DIR/stderr_$tag.txt" || status=$?
    end=$(date +%s%N)
    [ "$status" = 0 ] || die "the translator ended with status $status on $job (see $log)"
    [ -s "$out" ] || die "the translator wrote no output for $job"
    seconds=$(calc "($end - $start) / 1000000000")
    rss=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$log")
    [ -n "$rss" ] || die "no 'Maximum resident set size' in $log"
    cpu=$(awk -F': ' '/User time|System time/ {t += $2} END {printf "%.3f", t}' "$log")
    if [ "$rss" -gt "$peak" ]; then peak=$rss; fi
    times+=("$seconds")
    cpus+=("$cpu")
    printf '   run %d: %.3f s wall, %.3f s CPU, %d MB resident\n' "$run" "$seconds" "$cpu" "$((rss / 1024))"
  done
  median=$(printf '%s\n' "${times[@]}" | sort -g | awk '{a[NR]=$1} END {if (NR % 2) print a[(NR+1)/2]; else print (a[NR/2]+a[NR/2+1])/2}')
  median_cpu=$(printf '%s\n' "${cpus[@]}" | sort -g | awk '{a[NR]=$1} END {if (NR % 2) print a[(NR+1)/2]; else print (a[NR/2]+a[NR/2+1])/2}')
  ROWS+=("$size $layout_bytes $median $peak $median_cpu")
done

echo
echo "Translator: $EXE"
echo "Runs per job: $RUNS (median wall and CPU time; peak memory is the largest of the runs)"
echo "Load average now: $(cut -d' ' -f1-3 /proc/loadavg 2>/dev/null || echo unknown) on $(nproc 2>/dev/null || echo '?') CPUs"
echo
printf '%-8s %10s %9s %9s %9s %8s %8s %8s %9s %8s\n' "job" "Layout MB" "wall s" "CPU s" "peak MB" "MB/s" "time x" "size x" "exponent" "CPU exp"
prev_bytes=""
prev_time=""
prev_cpu=""
for row in "${ROWS[@]}"; do
  read -r size bytes median peak cpu <<<"$row"
  mb=$(calc "$bytes / 1000000")
  rate=$(calc "$mb / $median")
  if [ -n "$prev_bytes" ]; then
    tx=$(calc "$median / $prev_time")
    sx=$(calc "$bytes / $prev_bytes")
    ex=$(calc "log($tx) / log($sx)")
    cx=$(calc "log($cpu / $prev_cpu) / log($sx)")
    printf '%-8s %10.2f %9.3f %9.3f %9.1f %8.2f %8.2f %8.2f %9.2f %8.2f\n' "${size}MB" "$mb" "$median" "$cpu" \
      "$(calc "$peak / 1024")" "$rate" "$tx" "$sx" "$ex" "$cx"
  else
    printf '%-8s %10.2f %9.3f %9.3f %9.1f %8.2f %8s %8s %9s\n' "${size}MB" "$mb" "$median" "$cpu" \
      "$(calc "$peak / 1024")" "$rate" "-" "-" "-"
  fi
  prev_bytes=$bytes
  prev_time=$median
  prev_cpu=$cpu
done
