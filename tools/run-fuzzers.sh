#!/usr/bin/env bash
# Runs every fuzz target of a fuzz build for a set time, one after the other.
#
#   tools/run-fuzzers.sh <build tree>/fuzz <seconds> [extra libFuzzer flags]
#
# Each target grows its corpus in <build tree>/fuzz/corpus/<name>, reads its
# seeds from <build tree>/fuzz/seeds/<name>, and logs to
# <build tree>/fuzz/logs/<name>.log. A failing input is written to the logs
# folder as crash-*, leak-*, timeout-* or oom-*; keep it as a regression
# input in fuzz/regressions/<name>/ once the fault is fixed. Prints
# executions and coverage of each target and fails if any target failed.
set -euo pipefail

fuzz_dir=$(cd "${1:?usage: tools/run-fuzzers.sh <fuzz build dir> <seconds> [flags]}" && pwd)
seconds=${2:?usage: tools/run-fuzzers.sh <fuzz build dir> <seconds> [flags]}
shift 2
source_dir=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$fuzz_dir/logs"

failed=0
printf '%-20s %12s %8s %8s  %s\n' target executions cov ft result
for program in "$fuzz_dir"/*_fuzzer; do
  name=$(basename "$program" _fuzzer)
  log="$fuzz_dir/logs/$name.log"
  flags=(-max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 -print_final_stats=1
         -artifact_prefix="$fuzz_dir/logs/")
  environment=()
  case $name in
    document | parser) flags+=(-dict="$source_dir/fuzz/xml.dict") ;;
    po_import) flags+=(-dict="$source_dir/fuzz/po.dict") ;;
    xliff*_import) flags+=(-dict="$source_dir/fuzz/xliff.dict") ;;
  esac
  case $name in
    # Leaks inside Xerces-C, see fuzz/lsan.supp; matching them needs full
    # unwinding, which the slower import targets go without.
    document | parser)
      environment=(LSAN_OPTIONS=suppressions="$source_dir/fuzz/lsan.supp":print_suppressions=0
                   ASAN_OPTIONS=fast_unwind_on_malloc=0) ;;
    *_import)
      environment=(LSAN_OPTIONS=suppressions="$source_dir/fuzz/lsan.supp":print_suppressions=0) ;;
  esac
  mkdir -p "$fuzz_dir/corpus/$name" "$fuzz_dir/seeds/$name"
  if env "${environment[@]}" "$program" "${flags[@]}" "$@" "$fuzz_dir/corpus/$name" \
       "$fuzz_dir/seeds/$name" >"$log" 2>&1; then
    result=ok
  else
    result="FAILED, see $log"
    failed=1
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  coverage=$(grep -E '^#[0-9]+[[:space:]]+(DONE|INITED|NEW|REDUCE|pulse)' "$log" | tail -1 |
             sed -E 's/.* cov: ([0-9]+) ft: ([0-9]+).*/\1 \2/' || true)
  printf '%-20s %12s %8s %8s  %s\n' "$name" "${executions:-?}" ${coverage:-? ?} "$result"
done
exit $failed
