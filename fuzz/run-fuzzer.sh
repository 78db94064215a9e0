#!/usr/bin/env bash
# Runs the reader's fuzzer for a bounded time and sorts what it found (make fuzz).
#
#   fuzz/run-fuzzer.sh <build folder> <seconds>
#
# The fuzzer keeps going after a finding, so that one run shows all it can find. Each finding is
# then run again on its own and judged by where it happened:
#   - in our code (any frame of ours above the library calls): the run fails, the input stays in
#     <build folder>/findings/ for a regression test;
#   - inside libhdf5 itself: a defect of the library's own parser of damaged files (the Debian 12
#     build, 1.10.8), which no check of ours before the call can rule out. The input is moved to
#     findings/libhdf5/ and listed, and the run does not fail on it.
set -euo pipefail

build=$1
seconds=$2
source_dir=$(cd "$(dirname "$0")/.." && pwd)
fuzzer=./fuzz/tessaly_reader_fuzzer

cd "$build"
mkdir -p corpus findings/libhdf5
export LSAN_OPTIONS="suppressions=$source_dir/sanitizers/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

before=$(mktemp)
trap 'rm -f "$before"' EXIT
ls findings > "$before"

echo "Fuzzing the reader for $seconds s (corpus in $build/corpus, findings in $build/findings)"
"$fuzzer" -fork=1 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 \
  -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
  -dict="$source_dir/fuzz/vqd.dict" -artifact_prefix=findings/ corpus seeds > fuzz.log 2>&1 || true
grep -E '^#[0-9]+: cov' fuzz.log | tail -1 || true

# The first frame of a report that is neither the sanitizer's or fuzzer's machinery, nor the C or
# C++ runtime: the code in which the fault happened.
fault_frame() {
  grep -E '^ +#[0-9]+ ' | grep -vE '__sanitizer|__asan|__interceptor|/sysdeps/|__mem(cpy|move|set)_|__lsan|__ubsan|fuzzer::|libc\.so|libstdc\+\+| in (malloc|calloc|realloc|free|memcpy|memmove|memset|strlen|operator new|operator delete)' \
    | head -1 || true
}

ours=0
library=0
for finding in findings/*; do
  [ -f "$finding" ] || continue
  name=$(basename "$finding")
  report=$("$fuzzer" -runs=1 -timeout=20 -rss_limit_mb=2048 "$finding" 2>&1 || true)
  frame=$(printf '%s\n' "$report" | fault_frame)
  kind=$(printf '%s\n' "$report" | grep -oE 'ERROR: [A-Za-z]+: [A-Za-z-]+|SUMMARY: [A-Za-z]+: [A-Za-z-]+' | head -1 || true)
  if [ -z "$kind" ] && grep -qx "$name" "$before"; then
    echo "fixed: $build/findings/$name no longer fails; remove it once it has its regression test"
    continue
  fi
  if [[ "$frame" == *libhdf5* ]]; then
    library=$((library + 1))
    mv "$finding" findings/libhdf5/
    echo "libhdf5 defect: $name: $kind at${frame#*in}"
  else
    ours=$((ours + 1))
    echo "FINDING: $build/findings/$name: ${kind:-no report} at${frame#*in}"
  fi
done

echo "fuzz: $ours finding(s) in our code, $library in libhdf5 (kept in $build/findings/libhdf5)"
[ "$ours" -eq 0 ]
