#!/usr/bin/env bash
# Export and import of msgtool, proven against gettext and translate-toolkit.
#   tests/msgtool_translation_test.sh <msgtool> <source dir> <case>
set -euo pipefail
tool=$1 source_dir=$2 case=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cp "$source_dir/tests/data/translation/app.xml" "$source_dir/schema/messages.xsd" .
cp app.xml original.xml

fail() { echo "FAIL: $*" >&2; exit 1; }
# The texts of one language with key and severity, one PO entry each, without
# places: what must survive a trip.
texts_of() { "$tool" export --format po --source "$2" --target xx "$1" 2>/dev/null | grep -v '^#[:]' | sed '1,/^$/d'; }
same_texts() { diff <(texts_of "$1" "$3") <(texts_of "$2" "$3") >&2 || fail "$3 texts of $2 differ from $1"; }

case $case in
po_tools)
  "$tool" export --format po --source en --target fr -o fr.po app.xml
  msgfmt --check -o /dev/null fr.po
  msgcat --width=40 fr.po | msgen - -o filled.po   # rewrapped, then every msgstr filled
  "$tool" import --format po filled.po --into app.xml
  grep -qx 'fr: 5 translated, 0 missing, 100.0% of 5 messages' <<<"$("$tool" stats app.xml)" || fail "fr incomplete"
  same_texts original.xml app.xml en
  same_texts original.xml app.xml de
  # msgen copied each msgid, so every fr text is its en text: placeholders intact.
  diff <(texts_of app.xml en | grep -v '^msgstr') <(texts_of app.xml fr | grep -v '^msgstr') >&2 ||
    fail "fr texts are not the en texts msgen copied"
  grep -q '<!-- reviewed by the German team -->' app.xml || fail "comment lost"
  ;;
xliff_tools)
  "$tool" export --format xliff --source en --target de -o de.xlf app.xml
  [ "$(pocount --csv de.xlf | awk -F', *' 'NR == 2 {print $9}')" = 5 ] || fail "pocount does not count 5 units"
  podebug -f '[dbg] ' de.xlf marked.xlf >/dev/null 2>&1
  # A translator swaps the placeholders of app:start; one loses its equiv-text.
  sed -i '/resname="app:start"/,/<\/trans-unit>/{/<target/{s#<x id="1"[^>]*/>#@1@#; s#<x id="2"[^>]*/>#<x id="1" equiv-text="\&amp;0"/>#; s#@1@#<x id="2"/>#}}' marked.xlf
  "$tool" import --format xliff marked.xlf --into app.xml
  [ "$(grep -c 'xml:lang="de"[^>]*>[^<]*\[dbg\]' app.xml)" = 5 ] || fail "markers missing"
  grep -q 'xml:lang="de"[^>]*>&amp;1\[dbg\]  wird gestartet, Version &amp;0\.<' app.xml || fail "moved placeholders"
  grep -q 'xml:lang="de">\[dbg\] Say "hello" to C:\\temp\\&amp;0	and &amp;007, not &amp;&amp;1 or 100&amp;\.<' \
    app.xml || fail "placeholders of app:quote"
  same_texts original.xml app.xml en
  ;;
older_source)
  # A translation made from an older source text (its msgid) is imported,
  # stamped with that text, so check calls it stale. How the PO reader takes
  # comments, flags, obsolete entries and escapes is msgtool_po_test's.
  printf '%s\n' 'msgid ""' 'msgstr ""' '"Language: de\n"' '"Content-Type: text/plain; charset=UTF-8\n"' '' \
    'msgctxt "app:long"' 'msgid "an older source &0 &1 &2"' 'msgstr "&2 &0 &1"' >older.po
  "$tool" import --format po older.po --into app.xml
  grep -q 'xml:lang="de">&amp;2 &amp;0 &amp;1<' app.xml || fail "the translation was not imported"
  grep -q 'app.xml:[0-9:]*: warning: "app:long" in "de" .*\[stale-translation\]' <<<"$("$tool" check app.xml)" ||
    fail "a translation of an older source is not stale"
  ;;
round_trip)
  for format in po xliff xliff2; do
    "$tool" export --format $format --source en --target de -o de.$format app.xml
    grep -q ' 0 updated, 0 added, 3 unchanged' <<<"$("$tool" import --format $format de.$format --into app.xml)"
    cmp original.xml app.xml || fail "unchanged $format import changed the document"
    "$tool" import --format $format de.$format --into new-$format.xml >/dev/null
    same_texts original.xml new-$format.xml de
  done
  ;;
stale)
  # That stats and check count a stale text is msgtool_test's.
  "$tool" export --format po --source en --target de -o de.po app.xml
  sed -i 's/^msgstr "&0 wird gestartet, Version &1."/msgstr "\&0 startet jetzt, Version \&1."/' de.po
  "$tool" import --format po de.po --into app.xml >/dev/null
  sed -i '0,/Starting &amp;0, version/s//Launching \&amp;0, version/' app.xml   # the source changes
  "$tool" export --format po --source en --target de -o stale.po app.xml
  "$tool" export --format xliff --source en --target de -o stale.xlf app.xml
  "$tool" export --format xliff2 --source en --target de -o stale2.xlf app.xml
  [ "$(grep -c '^#, fuzzy' stale.po)" = 1 ] || fail "stale text not fuzzy"
  [ "$(grep -c 'state="needs-review-translation"' stale.xlf)" = 1 ] || fail "stale text not for review"
  [ "$(grep -c 'state="initial" subState="msgtool:needs-review"' stale2.xlf)" = 1 ] || fail "not for review in 2.0"
  grep -q '1 fuzzy' <<<"$("$tool" import --format xliff2 stale2.xlf --into app.xml)" || fail "2.0 review imported"
  grep -q '1 fuzzy' <<<"$("$tool" import --format po stale.po --into app.xml)" || fail "fuzzy imported"
  sed -i '/^#, fuzzy/d' stale.po   # the translator confirms it
  grep -q '1 updated' <<<"$("$tool" import --format po stale.po --into app.xml)" || fail "confirmation not taken"
  grep -q fuzzy <<<"$("$tool" export --format po --source en --target de app.xml 2>/dev/null)" && fail "still fuzzy"
  ;;
bad_input)
  "$tool" export --format po --source en --target de -o good.po app.xml
  "$tool" export --format xliff --source en --target de -o good.xlf app.xml
  # The readers' other refusals (an open quote, a charset, an XLIFF version) are
  # msgtool_po_test's and msgtool_xliff_test's.
  sed '0,/^msgctxt "app:quote"/{/^msgctxt "app:quote"/d}' good.po >missing_context.po
  sed 's/^msgctxt "app:quote"/msgctxt "app:start"/' good.po >duplicate_context.po
  sed 's/^\(msgstr "&0 wird gestartet, Version &\)1."/\12."/' good.po >unknown_placeholder.po
  sed 's#</body>#</bod>#' good.xlf >not_well_formed.xlf
  for input in missing_context.po duplicate_context.po unknown_placeholder.po not_well_formed.xlf; do
    status=0
    "$tool" import --format "$([ "${input##*.}" = po ] && echo po || echo xliff)" "$input" --into app.xml \
      >/dev/null 2>err.txt || status=$?
    [ $status = 1 ] || [ $status = 2 ] || fail "$input: exit code $status"
    grep -q "^$input:[0-9][0-9]*: error: " err.txt || fail "$input: no file:line: $(cat err.txt)"
    cmp -s original.xml app.xml || fail "$input changed the document"
  done
  ;;
plural_tools)
  # A plural message through translate-toolkit: xliff2po rebuilds msgid_plural
  # with Polish's three forms, and a filled XLIFF imports back every form.
  cat >plural.xml <<'XML'
<?xml version="1.0" encoding="UTF-8"?>
<MessageCollection xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
                   xsi:noNamespaceSchemaLocation="messages.xsd">
  <MessageNamespace name="app">
    <Message id="deleted" severity="info">
      <Text xml:lang="en" plural="one">Deleted &amp;0 file.</Text>
      <Text xml:lang="en">Deleted &amp;0 files.</Text>
      <Text xml:lang="pl" plural="one">Usunięto &amp;0 plik.</Text>
      <Text xml:lang="pl" plural="few">Usunięto &amp;0 pliki.</Text>
      <Text xml:lang="pl">Usunięto &amp;0 plików.</Text>
    </Message>
  </MessageNamespace>
</MessageCollection>
XML
  "$tool" export --format xliff --source en --target pl -o pl.xlf plural.xml 2>/dev/null
  xliff2po pl.xlf pl.po >/dev/null
  [ "$(grep -c '^msgid_plural "Deleted ' pl.po)" = 1 ] || fail "xliff2po made no msgid_plural"
  [ "$(grep -c '^msgstr\[[0-2]\] "Usunięto ' pl.po)" = 3 ] || fail "xliff2po did not keep three forms"
  sed 's/Usunięto/Skasowano/g' pl.xlf >filled.xlf
  "$tool" import --format xliff filled.xlf --into plural.xml >/dev/null
  for form in 'plural="one"[^>]*>Skasowano &amp;0 plik\.' 'plural="few"[^>]*>Skasowano &amp;0 pliki\.' \
              'plural="many"[^>]*>Skasowano &amp;0 plików\.' 'xml:lang="pl" msgtool:[^>]*>Skasowano &amp;0 plików\.'; do
    grep -q "$form" plural.xml || fail "form not imported: $form"
  done
  ;;
*) fail "unknown case $case" ;;
esac
echo "ok: $case"
