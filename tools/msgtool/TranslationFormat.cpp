#include "TranslationFormat.h"

#include <CLI/CLI.hpp>

#include <map>

namespace msgtool {

void addTranslationFormatOption(CLI::App& command, TranslationFormat& format) {
  const std::map<std::string, TranslationFormat> formats{{"po", TranslationFormat::po},
                                                         {"xliff", TranslationFormat::xliff},
                                                         {"xliff2", TranslationFormat::xliff2}};
  command.add_option("--format", format, "po (gettext), xliff (XLIFF 1.2) or xliff2 (XLIFF 2.0)")
      ->required()
      ->transform(CLI::CheckedTransformer(formats, CLI::ignore_case))
      ->option_text("po|xliff|xliff2");
}

std::string extensionOf(TranslationFormat format) {
  return format == TranslationFormat::po ? ".po" : ".xlf";
}

}  // namespace msgtool
