// The consumer in C++20: the same installed msg in a program that needs a
// C++20 library feature (std::span). It prints
// "consumer:span: 3 languages, best de-AT." on standard error and exits
// with 0 only if the text came out as expected.

#include <msg/msg.h>

#include <array>
#include <cstring>
#include <span>

static msg::MTE spanText(msg::info, "en", "consumer", "span", "&0 languages, best &1.", nullptr,
                         false, false);

// A language list from any contiguous run of languages.
static msg::LanguageList makeList(std::span<const msg::Language> languages) {
  return msg::LanguageList(static_cast<int>(languages.size()), languages.data());
}

int main() {
  const std::array<msg::Language, 3> languages{"de-AT", "de", "en"};
  const msg::LanguageList list = makeList(languages);

  msg::MessageHandler* handler = msg::MessageHandler::object();
  msg::Message message(handler, "consumer", "span");
  message.substitute(0, list.getCount());
  message.substitute(1, list.getLanguage(0).toString().c_str());
  handler->writeMessage(message);
  return std::strcmp(message.getMessage(), "3 languages, best de-AT.") == 0 ? 0 : 1;
}
