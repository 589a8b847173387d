#!/usr/bin/env bash
# measure.sh - how long TnfView takes on a generated job of a given size, and
# how long headless chromium takes to open and draw the page.
#
#   bash tools/TnfView/measure.sh BUILD_DIR SIZE_MB [WORK_DIR]
#
# Generates the job with bench/generate_job.py, translates it with the build's
# ExpeditionToTnf, writes the page with TnfView under /usr/bin/time, then loads
# it in chromium through the browser test's --measure mode. A benchmark, not a
# test: nothing here is asserted.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
size=$2
work=${3:-$(mktemp -d)}
mkdir -p "$work"
job="$work/job$size"
[ -d "$job" ] || python3 "$root/bench/generate_job.py" "$job" --size-mb "$size" >/dev/null
[ -f "$job.tnf" ] || "$build/translators/ExpeditionToTnf/ExpeditionToTnf" "$job" "$job.tnf" 2>/dev/null
echo "neutral file: $(stat -c %s "$job.tnf") bytes"
/usr/bin/time -f "TnfView: %e s wall, %U s user, %S s system, %M KB peak" \
  "$build/tools/TnfView/TnfView" "$job.tnf" "$job.html"
echo "page: $(stat -c %s "$job.html") bytes, $(grep -o '<path' "$job.html" | wc -l) path elements"
python3 "$root/tests/tools/TnfView/browser_test.py" --measure "$job.html"
