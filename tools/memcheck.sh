#!/usr/bin/env bash
# Runs every test executable of a build tree under valgrind memcheck.
#
#   tools/memcheck.sh <build tree> [jobs]
#
# A program fails when it fails itself, or when valgrind reports a memory
# error or a lost block (definitely, indirectly or possibly) that
# tools/valgrind.supp does not name; that file says what the library keeps
# on purpose until the process ends, and why. One log per program goes to
# <build tree>/memcheck-logs/.
set -euo pipefail

build_dir=$(cd "${1:?usage: tools/memcheck.sh <build tree> [jobs]}" && pwd)
jobs=${2:-2}
source_dir=$(cd "$(dirname "$0")/.." && pwd)
log_dir="$build_dir/memcheck-logs"
rm -rf "$log_dir"
mkdir -p "$log_dir"

mapfile -t programs < <(find "$build_dir/tests" -maxdepth 1 -type f -perm -u+x -name '*_test' | sort)
if [ ${#programs[@]} -eq 0 ]; then
  echo "memcheck: no test executables under $build_dir/tests" >&2
  exit 1
fi

run_one() {
  local program=$1 log
  log="$log_dir/$(basename "$program").log"
  # The tests find their data through absolute paths; run them from the
  # tree like ctest does.
  if (cd "$build_dir/tests" && valgrind --tool=memcheck --error-exitcode=99 \
        --leak-check=full --show-leak-kinds=definite,indirect,possible \
        --errors-for-leak-kinds=definite,indirect,possible \
        --track-origins=yes --num-callers=40 --soname-synonyms=somalloc=nouserintercepts \
        --suppressions="$source_dir/tools/valgrind.supp" --gen-suppressions=all \
        --log-file="$log" "$program" --gtest_brief=1 >"$log.out" 2>&1); then
    echo "memcheck: clean  $(basename "$program")"
  else
    echo "memcheck: FAILED $(basename "$program") (see $log)"
    return 1
  fi
}
export -f run_one
export build_dir log_dir source_dir

if printf '%s\n' "${programs[@]}" | xargs -P "$jobs" -I{} bash -c 'run_one "$@"' _ {}; then
  echo "memcheck: ${#programs[@]} programs, no error and no unexpected leak"
else
  grep -h -B2 -A40 -E 'ERROR SUMMARY: [1-9]|Invalid|uninitialised|are (definitely|indirectly|possibly|still)' \
    "$log_dir"/*.log | head -200 >&2 || true
  exit 1
fi
