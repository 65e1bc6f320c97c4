// msgtool header: a C++ header with one msg::Key per message, carrying its
// number of placeholders, so that a key typo or a wrong number of
// arguments fails at compile time.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "CppNames.h"
#include "Placeholders.h"
#include "PluralNeeds.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "msg/Language.h"
#include "platform/AtomicFile.h"

namespace msgtool {

namespace {

struct HeaderOptions {
  std::vector<std::string> files;
  std::string output;
  std::string reference = "en";
  std::string outerNamespace;
};

// The text a key's constant is made from: the last text in the reference
// language (the one the loader keeps), else the key's first text. Of a
// plural message it is the `other` text, which has every placeholder.
const CatalogueEntry& referenceText(const std::vector<const CatalogueEntry*>& entries,
                                    const std::string& reference) {
  const CatalogueEntry* chosen = nullptr;
  const CatalogueEntry* first = nullptr;
  for (const CatalogueEntry* entry : entries) {
    if (isOtherText(*entry)) {
      chosen = entry->packedLanguage == reference ? entry : chosen;
      first = first == nullptr ? entry : first;
    }
  }
  return chosen != nullptr ? *chosen : first != nullptr ? *first : *entries.front();
}

std::string includeGuard(const std::string& output) {
  std::string guard = "MSGTOOL_";
  for (const char c :
       safeCppName(std::filesystem::path(output).filename().string(), NameScope::enclosed)) {
    guard += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  }
  return guard + '_';
}

std::string generateHeader(const Catalogue& catalogue, const HeaderOptions& options) {
  const auto keys = catalogue.byKey();
  const std::string reference = msg::Language(options.reference.c_str()).toString();

  std::vector<std::string> spaces;
  std::map<std::string, std::vector<std::string>> identifiersOf;
  for (const auto& key : keys) {
    if (spaces.empty() || spaces.back() != key.first.first) {
      spaces.push_back(key.first.first);
    }
    identifiersOf[key.first.first].push_back(key.first.second);
  }
  const auto spaceNames = uniqueCppNames(spaces, NameScope::global);

  std::ostringstream out;
  std::string sources;
  for (const std::string& file : options.files) {
    sources += (sources.empty() ? "" : ", ") + std::filesystem::path(file).filename().string();
  }
  const std::string guard = includeGuard(options.output);
  out << "// Message keys of " << sources << ", written by `msgtool header`.\n"
      << "// Do not edit: change the message documents and generate it again.\n"
      << "// Each key takes exactly as many arguments as its texts have placeholders.\n\n"
      << "#ifndef " << guard << "\n#define " << guard << "\n\n#include <msg/Typed.h>\n";
  if (!options.outerNamespace.empty()) {
    out << "\nnamespace " << options.outerNamespace << " {\n";
  }
  for (const std::string& space : spaces) {
    const std::string& spaceName = spaceNames.at(space);
    out << "\nnamespace " << spaceName << " {\n";
    const auto names = uniqueCppNames(identifiersOf[space], NameScope::enclosed);
    for (const std::string& identifier : identifiersOf[space]) {
      const auto& entries = keys.at(MessageKey(space, identifier));
      const CatalogueEntry& text = referenceText(entries, reference);
      const std::set<unsigned> numbers = placeholderNumbers(text.text);
      std::size_t placeholders = numbers.empty() ? 0 : *numbers.rbegin() + 1;
      out << "\n// " << text.packedLanguage << ": \"" << escapeForCpp(text.text, false) << "\"\n";
      PluralKey plural;
      if (readPluralKey(entries, plural)) {
        // The count is always an argument, even where no text shows it.
        const unsigned count = text.count.empty() ? plural.count : countPlaceholderOf(text);
        placeholders = std::max<std::size_t>(placeholders, count + 1);
        out << "inline constexpr ::msg::PluralKey<" << placeholders << ", " << count << "> ";
      } else {
        out << "inline constexpr ::msg::Key<" << placeholders << "> ";
      }
      out << names.at(identifier) << "{\"" << escapeForCpp(space, true) << "\", \""
          << escapeForCpp(identifier, true) << "\"};\n";
    }
    out << "\n}  // namespace " << spaceName << '\n';
  }
  if (!options.outerNamespace.empty()) {
    out << "\n}  // namespace " << options.outerNamespace << '\n';
  }
  out << "\n#endif  // " << guard << '\n';
  return out.str();
}

// Writes `content` to `path` through a file beside it, so that a failed
// write leaves the old header as it was.
void replaceFile(const std::string& path, const std::string& content) {
  try {
    msg::platform::replaceFileAtomically(path, content.data(), content.size());
  } catch (const msg::platform::AtomicFileError& failure) {
    // A write that fails half way is reported without the system's reason,
    // as the tool's users know it.
    if (failure.getStep() == msg::platform::AtomicFileError::Step::write) {
      throw ToolError(path + ": cannot be written");
    }
    throw ToolError(path + ": cannot be written: " + failure.reason());
  }
}

bool isQualifiedName(const std::string& name) {
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = name.find("::", begin);
    const std::string part = name.substr(begin, end == std::string::npos ? end : end - begin);
    if (part.empty() || safeCppName(part, NameScope::global) != part) {
      return false;
    }
    if (end == std::string::npos) {
      return true;
    }
    begin = end + 2;
  }
}

int runHeader(const HeaderOptions& options) {
  if (!options.outerNamespace.empty() && !isQualifiedName(options.outerNamespace)) {
    throw ToolError("header: --namespace " + options.outerNamespace +
                    " is no C++ namespace name a header may use");
  }
  const Catalogue catalogue = readWholeCatalogue(options.files);
  replaceFile(options.output, generateHeader(catalogue, options));
  return kExitClean;
}

Action setUpHeader(CLI::App& command) {
  auto options = std::make_shared<HeaderOptions>();
  command.add_option("-o,--output", options->output, "The header to write")
      ->required()
      ->type_name("HEADER");
  command
      .add_option("--reference", options->reference,
                  "Language whose texts give the placeholders and the comments")
      ->capture_default_str();
  command
      .add_option("--namespace", options->outerNamespace,
                  "C++ namespace around the generated ones, e.g. app::keys")
      ->type_name("NAME");
  addDocumentsArgument(command, options->files);
  return [options] { return runHeader(*options); };
}

const SubcommandRegistration registration(
    {"header", "Write a C++ header with one typed msg::Key per message",
     "Each message namespace becomes a C++ namespace holding one constant per\n"
     "message, carrying its number of placeholders:\n"
     "  inline constexpr ::msg::Key<2> diskfull{\"app\", \"diskfull\"};\n"
     "so that a key typo or a wrong number of arguments fails at compile time.\n"
     "The same documents give the same bytes. CMake: msg_generate_header() runs\n"
     "this.\n",
     "msgtool header -o app_keys.h --namespace app::keys app-en.xml app-de.xml\n",
     "0  written\n"
     "2  usage error, or a document or the output failed (an old header stays)\n",
     setUpHeader});

}  // namespace

}  // namespace msgtool
