// Plural and ordinal messages (the Message elements of a namespace) for
// the tests that load them: "deleted" in English with an exact value, and
// in Polish, Arabic, Japanese, French and both kinds of Portuguese; "moved",
// whose count is its second placeholder; the ordinal "place"; and "plain".

#ifndef MSG_TESTS_PLURAL_CATALOGUE_H_
#define MSG_TESTS_PLURAL_CATALOGUE_H_

namespace test_support {

inline constexpr char kPluralMessages[] = R"(<Message id="deleted" severity="info">
  <Text xml:lang="en" plural="=0">No files deleted.</Text>
  <Text xml:lang="en" plural="one">&amp;0 file deleted.</Text>
  <Text xml:lang="en">&amp;0 files deleted.</Text>
  <Text xml:lang="pl" plural="one">Usunięto &amp;0 plik.</Text>
  <Text xml:lang="pl" plural="few">Usunięto &amp;0 pliki.</Text>
  <Text xml:lang="pl" plural="many">Usunięto &amp;0 plików.</Text>
  <Text xml:lang="pl">Usunięto &amp;0 pliku.</Text>
  <Text xml:lang="ar" plural="zero">لم يُحذف أي ملف (&amp;0).</Text>
  <Text xml:lang="ar" plural="one">حُذف ملف واحد (&amp;0).</Text>
  <Text xml:lang="ar" plural="two">حُذف ملفان (&amp;0).</Text>
  <Text xml:lang="ar" plural="few">حُذفت &amp;0 ملفات.</Text>
  <Text xml:lang="ar" plural="many">حُذف &amp;0 ملفًا.</Text>
  <Text xml:lang="ar">حُذف &amp;0 ملف.</Text>
  <Text xml:lang="ja">&amp;0 個のファイルを削除しました。</Text>
  <Text xml:lang="fr" plural="one">&amp;0 fichier supprimé.</Text>
  <Text xml:lang="fr" plural="many">&amp;0 de fichiers supprimés.</Text>
  <Text xml:lang="fr">&amp;0 fichiers supprimés.</Text>
  <Text xml:lang="pt" plural="one">&amp;0 arquivo excluído.</Text>
  <Text xml:lang="pt">&amp;0 arquivos excluídos.</Text>
  <Text xml:lang="pt-PT" plural="one">&amp;0 ficheiro eliminado.</Text>
  <Text xml:lang="pt-PT">&amp;0 ficheiros eliminados.</Text>
</Message>
<Message id="moved" count="&amp;1">
  <Text xml:lang="en" plural="one">&amp;0: moved &amp;1 file.</Text>
  <Text xml:lang="en">&amp;0: moved &amp;1 files.</Text>
</Message>
<Message id="place">
  <Text xml:lang="en" ordinal="one">&amp;0st place</Text>
  <Text xml:lang="en" ordinal="two">&amp;0nd place</Text>
  <Text xml:lang="en" ordinal="few">&amp;0rd place</Text>
  <Text xml:lang="en">&amp;0th place</Text>
</Message>
<Message id="plain"><Text xml:lang="en">plain &amp;0</Text></Message>
)";

}  // namespace test_support

#endif  // MSG_TESTS_PLURAL_CATALOGUE_H_
