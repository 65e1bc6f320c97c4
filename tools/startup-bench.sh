#!/bin/sh
# Start-up of whole processes, side by side: an empty C program, gettext
# from a C program and from a C++ program,
# and programs linked to libmsg-core.so or libmsg.so that ask for their
# handler, or load a compiled catalogue and look up one message (preference
# de-AT, de, en), at 10,000 and at 1,000,000 keys.
#
# Usage: tools/startup-bench.sh BUILD_DIR [RUNS]
#
# BUILD_DIR is a tree configured with -DMSG_BUILD_BENCH=ON in which the
# target msg_startup_bench is built (`make bench` does both, Release).
# Prints a Markdown table of medians over RUNS runs each (default 15): CPU
# (user + system), peak resident set and the shared libraries each process
# loads, with CPU and peak RSS against both gettext programs at 10,000
# keys. The catalogues are made under BUILD_DIR/bench/startup/catalogues;
# the .mo files are kept between runs, the compiled catalogues are written
# again each time, so that they always have the library's current format.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
  echo "usage: $0 BUILD_DIR [RUNS]" >&2
  exit 2
fi
build=$1
runs=${2:-15}
bin=$build/bench/startup
work=$bin/catalogues
command -v msgfmt >/dev/null || { echo "$0: msgfmt (gettext) is needed" >&2; exit 2; }
for program in startup_runner startup_make_catalogue startup_empty startup_gettext \
  startup_gettext_cxx; do
  [ -x "$bin/$program" ] || { echo "$0: build the target msg_startup_bench in $build" >&2; exit 2; }
done

for count in 10000 1000000; do
  dir=$work/$count
  mkdir -p "$dir"
  if [ ! -f "$dir/mo.done" ]; then
    echo "making the gettext catalogue of $count keys" >&2
    "$build/bench/msg_bench_generate" "$dir" "$count" po >/dev/null
    for language in en de de_AT; do
      mkdir -p "$dir/locale/$language/LC_MESSAGES"
      msgfmt -o "$dir/locale/$language/LC_MESSAGES/msgbench.mo" "$dir/po/$language.po"
    done
    rm -rf "$dir/po"
    touch "$dir/mo.done"
  fi
  "$bin/startup_make_catalogue" "$dir/messages.msgc" "$count" >"$dir/key"
done

k10=$work/10000
m1=$work/1000000
key10=$(cat "$k10/key")
key1m=$(cat "$m1/key")
plan=$work/plan.tsv
tab=$(printf '\t')
cat >"$plan" <<PLAN
empty C program${tab}$bin/startup_empty
empty C++ program${tab}$bin/startup_cxx_empty
C++ program linked to libicuuc${tab}$bin/startup_icu
gettext: bind, one dcgettext, 10,000 keys${tab}$bin/startup_gettext $k10/locale $key10
gettext, 1,000,000 keys${tab}$bin/startup_gettext $m1/locale $key1m
gettext from a C++ program, 10,000 keys${tab}$bin/startup_gettext_cxx $k10/locale $key10
gettext from a C++ program, 1,000,000 keys${tab}$bin/startup_gettext_cxx $m1/locale $key1m
libmsg-core: MessageHandler::object()${tab}$bin/startup_core_object
libmsg-core: compiled load, one lookup, 10,000 keys${tab}$bin/startup_core_lookup $k10/messages.msgc $key10
libmsg-core: compiled load, one lookup, 1,000,000 keys${tab}$bin/startup_core_lookup $m1/messages.msgc $key1m
libmsg: MessageHandlerX::object()${tab}$bin/startup_full_object
libmsg: MessageHandlerX, compiled load, one lookup, 10,000 keys${tab}$bin/startup_full_lookup $k10/messages.msgc $key10
libmsg: MessageHandlerX, compiled load, one lookup, 1,000,000 keys${tab}$bin/startup_full_lookup $m1/messages.msgc $key1m
PLAN

# gettext takes its preference from LANGUAGE (its program sets C.UTF-8).
LANGUAGE=de_AT:de:en "$bin/startup_runner" "$runs" "$plan" \
  "C gettext=gettext: bind, one dcgettext, 10,000 keys" \
  "C++ gettext=gettext from a C++ program, 10,000 keys"
