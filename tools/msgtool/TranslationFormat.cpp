#include "TranslationFormat.h"

#include <CLI/CLI.hpp>

#include <map>

namespace msgtool {

void addTranslationFormatOption(CLI::App& command, TranslationFormat& format) {
  const std::map<std::string, TranslationFormat> formats{{"po", TranslationFormat::po},
                                                         {"xliff", TranslationFormat::xliff}};
  command.add_option("--format", format, "po (gettext) or xliff (XLIFF 1.2)")
      ->required()
      ->transform(CLI::CheckedTransformer(formats, CLI::ignore_case))
      ->option_text("po|xliff");
}

std::string extensionOf(TranslationFormat format) {
  return format == TranslationFormat::po ? ".po" : ".xlf";
}

}  // namespace msgtool
