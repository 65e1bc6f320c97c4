#!/usr/bin/env bash
# The long runs of the import fuzz targets: 10^7 executions each, one target
# after the other, at the lowest priority, so that a shared machine stays
# usable.
#
#   tools/run-long-fuzz.sh <build tree>/fuzz <output dir> [runs] [targets...]
#
# The tree is one configured for long runs (docs/reliability.md, "Import
# targets: runs"):
#   cmake -S . -B build/fuzz-long -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
#     -DCMAKE_CXX_COMPILER=clang++-14 -DMSG_BUILD_FUZZ=ON -DMSG_BUILD_TESTS=OFF \
#     -DMSG_BUILD_EXAMPLES=OFF -DMSG_FUZZ_SANITIZERS=undefined
#   cmake --build build/fuzz-long --target po_import_fuzzer xliff12_import_fuzzer \
#     xliff20_import_fuzzer
# An ASan tree (build/fuzz) runs as well, some ten times slower.
#
# Each target <name> grows its corpus in <output dir>/<name>/corpus from the
# tree's seeds (which are never written), logs to <output dir>/<name>/log,
# and leaves a failing input in <output dir>/<name>/ as crash-*, timeout-* or
# oom-*. A run cut short goes on as a further leg: run the script again with
# the executions still missing as [runs] and the target's name; it starts
# from the grown corpus and logs to log.2, log.3, ... so that the legs'
# `stat::number_of_executed_units` add up. Do not stop the process with
# SIGSTOP for longer than the timeout (30 s): libFuzzer's alarm then fires
# when it resumes and reports a false timeout. A failing target does not stop the ones after it. The lines
# "start <name> <time>" and "end <name> <time> <exit code>" go to
# <output dir>/runs. Exits 1 if any target failed.
set -uo pipefail

usage='usage: tools/run-long-fuzz.sh <fuzz build dir> <output dir> [runs] [targets...]'
fuzz_dir=$(cd "${1:?$usage}" && pwd) || exit 2
output=${2:?$usage}
runs=${3:-10000000}
shift $(($# < 3 ? $# : 3))
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(po_import xliff12_import xliff20_import)
fi
source_dir=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$output"
output=$(cd "$output" && pwd)

failed=0
for name in "${targets[@]}"; do
  program="$fuzz_dir/${name}_fuzzer"
  if [ ! -x "$program" ]; then
    echo "no fuzz target $program" >&2
    failed=1
    continue
  fi
  case $name in
    po_import) dict=po ;;
    *) dict=xliff ;;
  esac
  mkdir -p "$output/$name/corpus"
  log="$output/$name/log"
  leg=1
  while [ -e "$log" ]; do
    leg=$((leg + 1))
    log="$output/$name/log.$leg"
  done
  echo "start $name leg $leg runs $runs $(date -u +%FT%TZ)" >>"$output/runs"
  # The seeds come after the corpus: libFuzzer writes new inputs only into
  # the first folder. Xerces-C's known leaks are suppressed as in `make test`
  # (they matter only in an ASan tree).
  LSAN_OPTIONS=suppressions="$source_dir/fuzz/lsan.supp":print_suppressions=0 \
    nice -n 19 "$program" -runs="$runs" -timeout=30 -rss_limit_mb=2048 -print_final_stats=1 \
    -dict="$source_dir/fuzz/$dict.dict" -artifact_prefix="$output/$name/" \
    "$output/$name/corpus" "$fuzz_dir/seeds/$name" >"$log" 2>&1
  code=$?
  echo "end $name leg $leg $(date -u +%FT%TZ) $code" >>"$output/runs"
  if [ $code -ne 0 ]; then
    failed=1
  fi
done
exit $failed
