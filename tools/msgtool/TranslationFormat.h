// TranslationFormat: the file formats export writes and import reads.

#ifndef MSGTOOL_TRANSLATIONFORMAT_H_
#define MSGTOOL_TRANSLATIONFORMAT_H_

#include <string>

namespace CLI {
class App;
}

namespace msgtool {

enum class TranslationFormat { po, xliff, xliff2 };

// Adds the required "--format po|xliff|xliff2" to `command`.
void addTranslationFormatOption(CLI::App& command, TranslationFormat& format);

// ".po" or ".xlf".
std::string extensionOf(TranslationFormat format);

}  // namespace msgtool

#endif  // MSGTOOL_TRANSLATIONFORMAT_H_
