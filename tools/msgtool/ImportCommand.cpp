// msgtool import: translations from a PO or XLIFF file into a message
// document, leaving the rest of the document as it was.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "DocumentCharacters.h"
#include "GettextPlurals.h"
#include "IncomingFile.h"
#include "LanguageTags.h"
#include "MessageDocumentEditor.h"
#include "Placeholders.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "TextWrite.h"
#include "ToolError.h"
#include "TranslationFormat.h"
#include "message_documents/MessageDocumentReader.h"
#include "message_documents/PluralMessage.h"
#include "msg/Plural.h"

namespace msgtool {

namespace {

struct ImportOptions {
  TranslationFormat format = TranslationFormat::po;
  std::string input;
  std::string into;
  std::string source = "en";
  std::string target;
  std::string schema = "messages.xsd";
  bool acceptFuzzy = false;
  bool addNewKeys = false;
};

// The languages an import works in, as tags.
struct Languages {
  std::string source;
  std::string target;
};

// The tag of a language the file or an option names. Raises ToolError
// (naming the file if `file` is not empty) for a name that is no tag.
std::string tagOf(const std::string& name, const std::string& where, const std::string& file) {
  const std::optional<std::string> tag = languageTagOf(name);
  if (!tag) {
    const std::string message = where + " \"" + name +
                                "\" is no language tag msg uses; write a two-letter language and "
                                "an optional two-letter region, like \"de\" or \"de-AT\"";
    throw file.empty() ? ToolError(message) : ToolError(file, 0, message);
  }
  return *tag;
}

// The languages of the import. Raises ToolError when they would let the file
// change texts that are not its own: a target language that is the source
// language, a --target unlike the file's language, or a unit whose xml:lang
// is unlike the file's.
Languages languagesOf(const ImportOptions& options, const IncomingFile& file) {
  const std::string& path = options.input;
  Languages languages;
  std::string targetOrigin;  // says where the target language comes from
  if (file.targetLanguage.empty()) {
    languages.target = tagOf(options.target, "--target", "");
    targetOrigin = "--target says \"" + options.target + "\"";
  } else {
    const std::string field = std::string("the file's ") + file.targetField;
    languages.target = tagOf(file.targetLanguage, field, path);
    targetOrigin = field + " says \"" + file.targetLanguage + "\"";
    if (!options.target.empty() && tagOf(options.target, "--target", "") != languages.target) {
      throw ToolError(path, 0,
                      targetOrigin + ", but --target says \"" + options.target +
                          "\"; leave out --target to import the file as \"" + languages.target +
                          "\", or correct the file");
    }
  }
  const std::string source = file.sourceLanguage.empty() ? options.source : file.sourceLanguage;
  languages.source = languageTagOf(source).value_or(source);
  if (languages.target == languages.source) {
    throw ToolError(path, 0,
                    "the target language \"" + languages.target +
                        "\" is also the source language; importing would replace the source "
                        "texts; " +
                        (file.targetLanguage.empty()
                             ? std::string("give the translations' language with --target")
                             : std::string("write the translations' language into the file's ") +
                                   file.targetField));
  }
  for (const IncomingUnit& unit : file.units) {
    if (!unit.targetLanguage.empty() &&
        languageTagOf(unit.targetLanguage).value_or(unit.targetLanguage) != languages.target) {
      throw ToolError(path, unit.line,
                      "the target of \"" + unit.key + "\" is in \"" + unit.targetLanguage +
                          "\" (xml:lang), but " + targetOrigin + "; correct the one that is wrong");
    }
    if (!unit.sourceLanguage.empty() &&
        languageTagOf(unit.sourceLanguage).value_or(unit.sourceLanguage) != languages.source) {
      throw ToolError(path, unit.line,
                      "the source of \"" + unit.key + "\" is in \"" + unit.sourceLanguage +
                          "\" (xml:lang), but the source language is \"" + source +
                          "\"; correct the one that is wrong");
    }
  }
  return languages;
}

// A plural entry with more or fewer forms than the target language has
// was made for another language or by hand: the file is refused whole.
void refuseWrongFormCounts(const std::string& path, const IncomingFile& file,
                           const std::string& target) {
  const GettextPlurals plurals = GettextPlurals::of(msg::Language(target.c_str()));
  for (const IncomingUnit& unit : file.units) {
    if (unit.sourcePlural && unit.forms.size() != plurals.forms.size()) {
      throw ToolError(path, unit.line,
                      "the plural entry \"" + unit.key + "\" has " +
                          std::to_string(unit.forms.size()) + " forms, but \"" + target +
                          "\" has " + std::to_string(plurals.forms.size()) + " (" +
                          plurals.header() + ")");
    }
  }
}

class Importer {
 public:
  Importer(const ImportOptions& options, const IncomingFile& file, MessageDocumentEditor& editor)
      : options(options), file(file), editor(editor) {}

  // Applies every unit; returns the exit code.
  int run(const Languages& languages) {
    // The stamp keeps the source language as the file names it.
    const std::string source = file.sourceLanguage.empty() ? options.source : file.sourceLanguage;
    const std::string& language = languages.target;
    for (const IncomingUnit& unit : file.units) {
      apply(unit, source, language);
    }
    if (updated + added > 0) {
      editor.save();
    }
    std::cout << options.into << ": " << language << ": " << updated << " updated, " << added
              << " added, " << unchanged << " unchanged, " << skipped << " skipped";
    if (skipped > 0) {
      std::cout << " (" << untranslated << " untranslated, " << fuzzy << " fuzzy, " << refused
                << " refused)";
    }
    std::cout << '\n';
    return refused > 0 ? kExitFindings : kExitClean;
  }

 private:
  void report(const IncomingUnit& unit, const char* level, const std::string& why) {
    std::cerr << options.input << ':' << unit.line << ": " << level << ": " << unit.key << ": "
              << why << '\n';
  }

  // The key of "a:b:c": the split the document knows, else the first colon.
  std::optional<MessageKey> keyOf(const std::string& key) const {
    std::optional<MessageKey> first;
    for (std::size_t colon = key.find(':'); colon != std::string::npos;
         colon = key.find(':', colon + 1)) {
      MessageKey split(key.substr(0, colon), key.substr(colon + 1));
      if (editor.hasMessage(split.first, split.second)) {
        return split;
      }
      if (!first) {
        first = split;
      }
    }
    return first;
  }

  // The key of `unit` and in `variant` the variant its key names, if the
  // unit may be imported: a key the document can hold and has (or may be
  // given), and a translation that is neither missing nor unreviewed.
  // Otherwise counts and reports why not, and returns nothing.
  std::optional<MessageKey> admittedKey(const IncomingUnit& unit,
                                        std::optional<MessageDocumentEditor::Variant>& variant) {
    const std::string unwritableKey = whyDocumentCannotHold(unit.key);
    if (!unwritableKey.empty()) {
      ++skipped, ++refused;
      report(unit, "error", "the key holds " + unwritableKey + "; not imported");
      return std::nullopt;
    }
    std::string keyText = unit.key;
    variant = unit.sourcePlural ? std::nullopt : TextWrite::takeVariant(keyText);
    std::optional<MessageKey> key = keyOf(keyText);
    if (!key || key->first.empty() || key->second.empty()) {
      ++skipped, ++refused;
      report(unit, "error", "is no key \"namespace:identifier\"");
      return std::nullopt;
    }
    if (unit.untranslated) {
      ++skipped, ++untranslated;
      return std::nullopt;
    }
    // A new document has no keys to keep: everything in the file is new.
    if (!editor.isNew() && !options.addNewKeys && !editor.hasMessage(key->first, key->second)) {
      ++skipped, ++refused;
      report(unit, "error",
             "the document has no such message; not imported (correct the key, or give "
             "--add-new-keys to add it)");
      return std::nullopt;
    }
    if (unit.fuzzy && !options.acceptFuzzy) {
      ++skipped, ++fuzzy;
      report(unit, "note",
             "is marked fuzzy and was not imported; review it, or give --accept-fuzzy");
      return std::nullopt;
    }
    return key;
  }

  // Whether every text of `writes` fits the source's placeholders
  // `expected` and count placeholder `count`; otherwise counts and reports
  // the first that does not.
  bool formsFit(const IncomingUnit& unit, const std::vector<TextWrite>& writes,
                const std::set<unsigned>& expected, unsigned count) {
    for (std::size_t form = 0; form < writes.size(); ++form) {
      const std::string which = unit.sourcePlural
                                    ? "the form " + std::string(writes[form].variant.value.empty()
                                                                    ? "other"
                                                                    : writes[form].variant.value)
                                    : std::string("the translation");
      const std::string fault = writes[form].fault(expected, count, which);
      if (!fault.empty() && writes[form].text.empty() && unit.sourcePlural) {
        ++skipped, ++untranslated;
        report(unit, "note", fault + "; not imported until every form is translated");
        return false;
      }
      if (!fault.empty()) {
        ++skipped, ++refused;
        report(unit, "error", fault + "; not imported");
        return false;
      }
    }
    return true;
  }

  void apply(const IncomingUnit& unit, const std::string& source, const std::string& language) {
    std::optional<MessageDocumentEditor::Variant> variant;
    const std::optional<MessageKey> key = admittedKey(unit, variant);
    if (!key) {
      return;
    }
    const std::string& sourceText = unit.sourcePlural ? *unit.sourcePlural : unit.source;
    // Files exported before the count note travelled name none: the
    // document's Message still knows its count. "&0" where neither names one.
    const std::string countText =
        unit.count.empty() ? editor.countOf(key->first, key->second) : unit.count;
    unsigned count = 0;
    if (!msg::PluralMessage::readCount(countText, count)) {
      ++skipped, ++refused;
      report(unit, "error",
             "the count \"" + countText + "\" is no placeholder \"&N\"; not imported");
      return;
    }
    const std::vector<TextWrite> writes = TextWrite::writesOf(unit, variant, language);
    if (!formsFit(unit, writes, placeholderNumbers(sourceText), count)) {
      return;
    }
    const std::string stamp = SourceStamp::of(source, sourceText).toString();
    bool same = true;
    bool existed = false;
    for (const TextWrite& write : writes) {
      std::optional<MessageDocumentEditor::ExistingText> existing =
          editor.find(key->first, key->second, language, write.variant);
      existed = existed || existing.has_value();
      same = same && existing && existing->text == write.text &&
             (existing->stamp.empty() || existing->stamp == stamp);
    }
    if (same) {
      ++unchanged;
      return;
    }
    if (editor.isOutOfReach(key->first, key->second)) {
      ++skipped, ++refused;
      report(unit, "error",
             "the message stands in a part that msgtool cannot edit (one included with "
             "xpointer or as text, or whose root is a Message); change it there by hand");
      return;
    }
    for (const TextWrite& write : writes) {
      editor.setText(key->first, key->second,
                     msg::DocumentText::isSeverityWord(unit.severity) ? unit.severity : "",
                     language, write.text, stamp, write.variant, unit.count);
    }
    ++(existed ? updated : added);
  }

  const ImportOptions& options;
  const IncomingFile& file;
  MessageDocumentEditor& editor;
  int updated = 0, added = 0, unchanged = 0, skipped = 0;
  int untranslated = 0, fuzzy = 0, refused = 0;
};

int runImport(const ImportOptions& options) {
  XmlSession session;
  try {
    const IncomingFile file = IncomingFile::read(options.input, options.format);
    if (file.targetLanguage.empty() && options.target.empty()) {
      throw ToolError(options.input + ": names no target language; give --target");
    }
    const Languages languages = languagesOf(options, file);
    refuseWrongFormCounts(options.input, file, languages.target);
    MessageDocumentEditor editor(options.into, options.schema);
    return Importer(options, file, editor).run(languages);
  } catch (const ToolError& problem) {
    if (!problem.namesFile()) {
      throw;
    }
    std::cerr << problem.describe() << "\nmsgtool: error: nothing was imported; " << options.into
              << " is unchanged\n";
    return kExitFailure;
  }
}

Action setUpImport(CLI::App& command) {
  auto options = std::make_shared<ImportOptions>();
  addTranslationFormatOption(command, options->format);
  command.add_option("IN", options->input, "The translated PO or XLIFF file")->required();
  command
      .add_option("--into", options->into,
                  "Message document to write the translations into; made if missing")
      ->required();
  command.add_option("--source", options->source,
                     "Source language, if the file does not name it (default: en)");
  command.add_option("--target", options->target, "Target language, if the file does not name it");
  command.add_flag("--accept-fuzzy", options->acceptFuzzy,
                   "Import fuzzy (PO) and needs-review (XLIFF) translations too");
  command.add_flag("--add-new-keys", options->addNewKeys,
                   "Add the keys the document does not have (by default each one is reported "
                   "and refused, as a typo or a key removed since the export)");
  command.add_option("--schema", options->schema,
                     "Schema location written into a new document (default: messages.xsd)");
  return [options] { return runImport(*options); };
}

const SubcommandRegistration registration(
    {"import", "Read translations from PO or XLIFF into a message document",
     "Writes each translated unit as the Text of its key in the target language,\n"
     "stamped with the source text it was made from. Untranslated and fuzzy units\n"
     "are skipped, and so is a translation whose placeholders differ from its\n"
     "source. A key the document does not have is refused unless --add-new-keys\n"
     "is given. A file in the source language, or whose languages disagree with\n"
     "--target or within, is refused as a whole. Everything else in the document\n"
     "stays as it was, and the document is replaced only once the result loads.\n",
     "msgtool import --format po de.po --into messages.xml\n"
     "msgtool import --format xliff --accept-fuzzy de.xlf --into messages.xml\n",
     "0  imported\n"
     "1  some units refused (placeholders unlike the source's, unwritable characters, unknown "
     "keys)\n"
     "2  nothing imported: usage error, or the file or the document cannot be used\n",
     setUpImport});

}  // namespace

}  // namespace msgtool
