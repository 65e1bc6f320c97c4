// msgtool import: translations from a PO or XLIFF file into a message
// document, leaving the rest of the document as it was.

#include <CLI/CLI.hpp>

#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "DocumentCharacters.h"
#include "LanguageTags.h"
#include "MessageDocumentEditor.h"
#include "Placeholders.h"
#include "PoFile.h"
#include "SourceStamp.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "TranslationFormat.h"
#include "XliffFile.h"
#include "message_documents/MessageDocumentReader.h"

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

// One unit of the file, whatever its format.
struct IncomingUnit {
  std::string key;  // "namespace:identifier"
  std::string source;
  std::string target;  // "" when there is none
  bool untranslated = false;
  bool fuzzy = false;
  std::string severity;
  int line = 0;
  std::string sourceLanguage;  // the unit's own xml:lang, "" if it names none
  std::string targetLanguage;
};

struct IncomingFile {
  std::string sourceLanguage;  // "" when the file does not say
  std::string targetLanguage;
  const char* targetField;  // where the file names its target language
  std::vector<IncomingUnit> units;
};

// The languages an import works in, as tags.
struct Languages {
  std::string source;
  std::string target;
};

// Two units of one key would leave the result to chance: the file is refused.
void refuseDuplicates(const std::string& path, const std::vector<IncomingUnit>& units) {
  std::map<std::string, int> firstLine;
  for (const IncomingUnit& unit : units) {
    auto [known, isNew] = firstLine.emplace(unit.key, unit.line);
    if (!isNew) {
      throw ToolError(path, unit.line,
                      "the key \"" + unit.key + "\" appears again (first on line " +
                          std::to_string(known->second) + ")");
    }
  }
}

std::string severityFrom(const std::vector<std::string>& comments) {
  for (const std::string& comment : comments) {
    if (comment.rfind("severity: ", 0) == 0) {
      return comment.substr(10);
    }
  }
  return std::string();
}

IncomingFile readPo(const std::string& path) {
  PoFile po = PoFile::read(path);
  if (po.header.empty() && po.entries.empty()) {
    throw ToolError(path, 0, "is empty: no header and no entries; nothing to import");
  }
  IncomingFile file{
      po.headerField("X-Source-Language"), po.headerField("Language"), "Language header", {}};
  for (const PoEntry& entry : po.entries) {
    if (!entry.context || entry.context->empty()) {
      throw ToolError(path, entry.line,
                      "the entry has no msgctxt; msgtool finds the message by its msgctxt "
                      "\"namespace:identifier\" (export the file with msgtool export)");
    }
    IncomingUnit unit{*entry.context,
                      entry.id,
                      entry.str,
                      entry.str.empty(),
                      entry.hasFlag("fuzzy"),
                      severityFrom(entry.extractedComments),
                      entry.line,
                      "",
                      ""};
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

IncomingFile readXliff(const std::string& path) {
  XliffFile xliff = XliffFile::read(path);
  IncomingFile file{xliff.sourceLanguage,
                    xliff.targetLanguage,
                    xliff.version2 ? "trgLang" : "target-language",
                    {}};
  for (const XliffUnit& in : xliff.units) {
    IncomingUnit unit;
    unit.key = in.key;
    unit.source = in.source;
    unit.target = in.target.value_or(std::string());
    unit.untranslated = unit.target.empty() || in.state == "new" || in.state == "needs-translation";
    unit.fuzzy = in.state.rfind("needs-review", 0) == 0;
    unit.severity = in.severity;
    unit.line = in.line;
    unit.sourceLanguage = in.sourceLanguage;
    unit.targetLanguage = in.targetLanguage;
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

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

  void apply(const IncomingUnit& unit, const std::string& source, const std::string& language) {
    const std::string unwritableKey = whyDocumentCannotHold(unit.key);
    if (!unwritableKey.empty()) {
      ++skipped, ++refused;
      report(unit, "error", "the key holds " + unwritableKey + "; not imported");
      return;
    }
    std::optional<MessageKey> key = keyOf(unit.key);
    if (!key || key->first.empty() || key->second.empty()) {
      ++skipped, ++refused;
      report(unit, "error", "is no key \"namespace:identifier\"");
      return;
    }
    if (unit.untranslated) {
      ++skipped, ++untranslated;
      return;
    }
    // A new document has no keys to keep: everything in the file is new.
    if (!editor.isNew() && !options.addNewKeys && !editor.hasMessage(key->first, key->second)) {
      ++skipped, ++refused;
      report(unit, "error",
             "the document has no such message; not imported (correct the key, or give "
             "--add-new-keys to add it)");
      return;
    }
    if (unit.fuzzy && !options.acceptFuzzy) {
      ++skipped, ++fuzzy;
      report(unit, "note",
             "is marked fuzzy and was not imported; review it, or give --accept-fuzzy");
      return;
    }
    const std::string unwritable = whyDocumentCannotHold(unit.target);
    if (!unwritable.empty()) {
      ++skipped, ++refused;
      report(unit, "error", "the translation holds " + unwritable + "; not imported");
      return;
    }
    const std::set<unsigned> expected = placeholderNumbers(unit.source);
    const std::set<unsigned> found = placeholderNumbers(unit.target);
    if (expected != found) {
      ++skipped, ++refused;
      report(unit, "error",
             "the translation has the placeholders " + describePlaceholders(found) +
                 ", its source " + describePlaceholders(expected) + "; not imported");
      return;
    }
    const std::string stamp = SourceStamp::of(source, unit.source).toString();
    std::optional<MessageDocumentEditor::ExistingText> existing =
        editor.find(key->first, key->second, language);
    if (existing && existing->text == unit.target &&
        (existing->stamp.empty() || existing->stamp == stamp)) {
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
    editor.setText(key->first, key->second,
                   msg::DocumentText::isSeverityWord(unit.severity) ? unit.severity : "", language,
                   unit.target, stamp);
    ++(existing ? updated : added);
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
    const IncomingFile file =
        options.format == TranslationFormat::po ? readPo(options.input) : readXliff(options.input);
    if (file.targetLanguage.empty() && options.target.empty()) {
      throw ToolError(options.input + ": names no target language; give --target");
    }
    const Languages languages = languagesOf(options, file);
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
