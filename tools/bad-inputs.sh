#!/usr/bin/env bash
# Measures every case of bad_input_probe in its own process and prints the
# rows of the bad-input table of docs/reliability.md.
#
#   tools/bad-inputs.sh <bad_input_probe> [time limit in seconds] [case...]
#
# Each case runs under /usr/bin/time (peak resident memory of the whole
# process) with a time limit (default 1200 s) and an address-space limit of
# 16 GiB, so a runaway input ends as "killed" instead of taking the machine.
set -euo pipefail

probe=${1:?usage: tools/bad-inputs.sh <bad_input_probe> [seconds] [case...]}
limit=${2:-1200}
shift $(( $# >= 2 ? 2 : 1 ))
if [ $# -gt 0 ]; then
  cases=("$@")
else
  mapfile -t cases < <("$probe" --list)
fi

echo "| case | outcome | new entries | time of the load | CPU of the process | peak RSS after / before | entries loaded before found | exit |"
echo "|---|---|---|---|---|---|---|---|"
for case in "${cases[@]}"; do
  log=$(mktemp)
  status=0
  /usr/bin/time -f 'wall=%e user=%U maxrss=%M' -o "$log.time" \
    timeout "$limit" prlimit --as=17179869184 "$probe" "$case" >"$log" 2>&1 || status=$?
  line=$(grep '^case=' "$log" || true)
  field() { sed -n "s/.* $1=\\([^ ]*\\).*/\\1/p" <<<"$line"; }
  if [ -n "$line" ]; then
    outcome=$(sed -E 's/.* outcome=(.*) new_entries=.*/\1/' <<<"$line")
    report=$(sed -E 's/.* report="([^"]*)".*/\1/' <<<"$line")
    [ -n "$report" ] && outcome="$outcome; report \"$report\""
    cpu=$(sed -n 's/.*user=\([^ ]*\).*/\1/p' "$log.time")
    echo "| $case | $outcome | $(field new_entries) | $(field time_ms) ms | $cpu s |" \
         "$(field peak_kb_after) / $(field peak_kb_before) KiB | $(field kept_entries_found) | $status |"
  else
    reason="exit $status"
    [ "$status" -eq 124 ] && reason="killed after the limit of $limit s"
    [ "$status" -gt 128 ] && [ "$status" -ne 124 ] && reason="ended by signal $((status - 128))"
    echo "| $case | no outcome: $reason ($(cat "$log.time" | tail -1)) | - | - | - | - | - | $status |"
  fi
  grep '^  text' "$log" | sed 's/^/    /' >&2 || true
  rm -f "$log" "$log.time"
done
