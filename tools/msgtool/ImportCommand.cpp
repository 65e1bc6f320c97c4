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
};

struct IncomingFile {
  std::string sourceLanguage;  // "" when the file does not say
  std::string targetLanguage;
  std::vector<IncomingUnit> units;
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
  IncomingFile file{po.headerField("X-Source-Language"), po.headerField("Language"), {}};
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
                      entry.line};
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

IncomingFile readXliff(const std::string& path) {
  XliffFile xliff = XliffFile::read(path);
  IncomingFile file{xliff.sourceLanguage, xliff.targetLanguage, {}};
  for (const XliffUnit& in : xliff.units) {
    IncomingUnit unit;
    unit.key = in.key;
    unit.source = in.source;
    unit.target = in.target.value_or(std::string());
    unit.untranslated = unit.target.empty() || in.state == "new" || in.state == "needs-translation";
    unit.fuzzy = in.state.rfind("needs-review", 0) == 0;
    unit.severity = in.severity;
    unit.line = in.line;
    file.units.push_back(std::move(unit));
  }
  refuseDuplicates(path, file.units);
  return file;
}

class Importer {
 public:
  Importer(const ImportOptions& options, const IncomingFile& file, MessageDocumentEditor& editor)
      : options(options), file(file), editor(editor) {}

  // Applies every unit; returns the exit code.
  int run() {
    std::string language = file.targetLanguage.empty() ? options.target : file.targetLanguage;
    std::replace(language.begin(), language.end(), '_', '-');  // gettext writes de_AT for de-AT
    const std::string source = file.sourceLanguage.empty() ? options.source : file.sourceLanguage;
    const std::string unwritable = whyDocumentCannotHold(language);
    if (!unwritable.empty()) {
      throw ToolError(options.input, 0, "the target language holds " + unwritable);
    }
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
    if (editor.isInIncludedPart(key->first, key->second)) {
      ++skipped, ++refused;
      report(unit, "error",
             "the message stands in a document that " + options.into +
                 " includes; import into that document instead");
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
    MessageDocumentEditor editor(options.into, options.schema);
    return Importer(options, file, editor).run();
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
  command.add_option("--schema", options->schema,
                     "Schema location written into a new document (default: messages.xsd)");
  return [options] { return runImport(*options); };
}

const SubcommandRegistration registration(
    {"import", "Read translations from PO or XLIFF into a message document",
     "Writes each translated unit as the Text of its key in the target language,\n"
     "stamped with the source text it was made from. Untranslated and fuzzy units\n"
     "are skipped, and so is a translation whose placeholders differ from its\n"
     "source. Everything else in the document stays as it was, and the document\n"
     "is replaced only once the result loads.\n",
     "msgtool import --format po de.po --into messages.xml\n"
     "msgtool import --format xliff --accept-fuzzy de.xlf --into messages.xml\n",
     "0  imported\n"
     "1  some units refused (placeholders unlike the source's, characters a document cannot hold)\n"
     "2  nothing imported: usage error, or the file or the document cannot be used\n",
     setUpImport});

}  // namespace

}  // namespace msgtool
