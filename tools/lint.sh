#!/usr/bin/env bash
# Runs clang-tidy with the checks of .clang-tidy over the sources of the
# library and of msgtool, JOBS files at a time, and fails on any finding.
#
#   tools/lint.sh <build tree> [jobs]
#
# <build tree> is a configured tree whose compile_commands.json names every
# source (the test tree of `make test`). Only the findings are printed, not
# clang-tidy's count of the warnings it suppressed in system headers.
set -euo pipefail

tree=${1:?usage: tools/lint.sh <build tree> [jobs]}
jobs=${2:-2}
cd "$(dirname "$0")/.."
if [ ! -f "$tree/compile_commands.json" ]; then
  echo "lint: $tree/compile_commands.json is missing; configure the tree first" >&2
  exit 2
fi
tidy=$(command -v clang-tidy-14 || command -v clang-tidy || true)
if [ -z "$tidy" ]; then
  echo "lint: clang-tidy is not installed" >&2
  exit 2
fi

# Every folder of library code; a folder that does not exist yet is skipped.
folders=(platform message_core compiled_catalogues structured_exceptions xml_access
         message_documents tools/msgtool)
mapfile -t sources < <(git ls-files -- "${folders[@]/%//*.cpp}")
if [ ${#sources[@]} -eq 0 ]; then
  echo "lint: no sources found" >&2
  exit 2
fi

set +e
printf '%s\n' "${sources[@]}" |
  xargs -P "$jobs" -n 4 "$tidy" -p "$tree" --quiet 2>&1 |
  grep -v -E '^[0-9]+ warnings? (and [0-9]+ errors? )?generated\.$'
codes=("${PIPESTATUS[@]}")
set -e
# xargs ends with 123 when a clang-tidy run found something; grep's status
# only says whether anything was printed.
if [ "${codes[1]}" -ne 0 ]; then
  echo "lint: clang-tidy found problems in the files above (checks in .clang-tidy)" >&2
  exit 1
fi
echo "lint: ${#sources[@]} files clean"
