// msgtool show: a message as an application would print it, so that a
// translator can check a text without writing a program.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Catalogue.h"
#include "CommandSupport.h"
#include "Placeholders.h"
#include "Subcommand.h"
#include "ToolError.h"
#include "message_core/SeverityWords.h"
#include "msg/ErrorInMessageDocument.h"
#include "msg/FormattingMessageChannel.h"
#include "msg/LanguageList.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageHandlerX.h"

namespace msgtool {

namespace {

struct ShowOptions {
  std::vector<std::string> words;  // FILE... [--] NAMESPACE IDENTIFIER [ARG...]
  std::string languages;
  int width = 0;
};

// The message's text as it stands, on standard output.
class PlainChannel : public msg::MessageChannel {
 protected:
  void onMessage(const msg::Message& message) override {
    const char* text = message.getMessage();
    std::cout << (text != nullptr ? text : "") << '\n';
  }
};

// The message laid out by the library's formatting channel, on standard
// output.
class WrappingChannel : public msg::FormattingMessageChannel {
 public:
  void onMessageLine(bool, bool, const char* line) override { std::cout << line << '\n'; }
};

// The leading words that are documents: those before "--", if it was
// given; otherwise those that end in ".xml" or name an existing file. The
// first other word is the namespace. Returns how many there are, with the
// "--" taken out of `words` and the words after it as they were typed.
std::size_t takeDocuments(std::vector<std::string>& words) {
  const auto mark = std::find_if(words.begin(), words.end(), [](const std::string& word) {
    return !word.empty() && word.front() == kEndOfOptionsMark;
  });
  if (mark != words.end()) {
    const auto count = static_cast<std::size_t>(mark - words.begin());
    words.erase(mark);
    for (auto word = words.begin() + static_cast<long>(count); word != words.end(); ++word) {
      word->erase(0, 1);
    }
    return count;
  }
  std::size_t count = 0;
  while (count < words.size()) {
    const std::string& word = words[count];
    std::error_code ignored;
    const bool looksLikeDocument =
        (word.size() > 4 && word.compare(word.size() - 4, 4, ".xml") == 0) ||
        std::filesystem::is_regular_file(word, ignored);
    if (!looksLikeDocument) {
      break;
    }
    ++count;
  }
  return count;
}

std::string languagesOf(const Catalogue& catalogue, const MessageKey& key) {
  std::string out;
  for (const CatalogueEntry& entry : catalogue.entries()) {
    if (entry.effectiveNamespace == key.first && entry.effectiveIdentifier == key.second &&
        out.find(entry.packedLanguage) == std::string::npos) {
      out += (out.empty() ? "" : ", ") + entry.packedLanguage;
    }
  }
  return out;
}

// ", form few" for the variant of a plural message that the count among
// `arguments` chooses, as the library chose it: the record takes the
// variant when its count is filled in. "" for other messages and without a
// count.
std::string chosenForm(const Catalogue& catalogue, const MessageKey& key, msg::Message& found,
                       const std::vector<const char*>& arguments) {
  if (!found.isPlural() || found.getCountPlaceholder() >= arguments.size()) {
    return "";
  }
  found.substitute(found.getCountPlaceholder(), arguments[found.getCountPlaceholder()]);
  const std::string chosen = found.getText() != nullptr ? found.getText() : "";
  const std::string language = found.getLanguage().toString();
  found.clear();
  for (const CatalogueEntry& entry : catalogue.entries()) {
    if (entry.effectiveNamespace == key.first && entry.effectiveIdentifier == key.second &&
        entry.packedLanguage == language && entry.text == chosen) {
      const std::string& form = entry.plural.empty() ? entry.ordinal : entry.plural;
      return ", form " + (form.empty() ? std::string("other") : form);
    }
  }
  return "";
}

// What show is asked for: the documents, the key and its arguments, read
// from the words on the command line; raises ToolError if they are not that.
struct ShowRequest {
  std::vector<std::string> files;
  MessageKey key;
  std::vector<const char*> arguments;  // into the options' words
};

ShowRequest requestOf(ShowOptions& options) {
  const std::size_t documents = takeDocuments(options.words);
  if (documents == 0) {
    throw ToolError("show: name at least one message document first");
  }
  if (options.words.size() < documents + 2) {
    throw ToolError("show: name the message by NAMESPACE and IDENTIFIER after the documents");
  }
  ShowRequest request;
  request.files.assign(options.words.begin(), options.words.begin() + documents);
  request.key = MessageKey(options.words[documents], options.words[documents + 1]);
  for (std::size_t i = documents + 2; i < options.words.size(); ++i) {
    request.arguments.push_back(options.words[i].c_str());
  }
  return request;
}

// --languages if given, else the environment's preference.
msg::LanguageList preferredLanguages(const std::string& option) {
  if (option.empty()) {
    return msg::LanguageList::fromEnvironment();
  }
  try {
    return msg::LanguageList::parse(option);
  } catch (const std::invalid_argument& error) {
    throw ToolError(std::string("show: --languages: ") + error.what());
  }
}

// Wrapped at `width` columns as a terminal shows them, whatever the
// catalogue's script; as it stands with width 0.
void setChannel(msg::MessageHandler& handler, int width) {
  if (width > 0) {
    auto* channel = new WrappingChannel;
    channel->setRightMargin(width - 1);
    channel->setTextHeaderFormat("&t");
    channel->setTextModel(msg::FormattingMessageChannel::TextModel::kUnicode);
    handler.setMessageChannel(channel, true);
  } else {
    handler.setMessageChannel(new PlainChannel, true);
  }
}

int runShow(ShowOptions options) {
  ShowRequest request = requestOf(options);
  const MessageKey& key = request.key;
  std::vector<const char*>& arguments = request.arguments;
  if (options.width < 0 || options.width == 1) {
    throw ToolError("show: --width must be at least 2");
  }

  const Catalogue catalogue = readWholeCatalogue(request.files);
  const msg::LanguageList languages = preferredLanguages(options.languages);
  // The session comes first, so that the handler joins it with UTF-8 output.
  XmlSession session;
  msg::MessageHandlerX handler;
  handler.setLanguageList(languages);
  for (const std::string& file : request.files) {
    try {
      handler.loadMessageDocument(file.c_str());
    } catch (const msg::ErrorInMessageDocument& error) {
      throw ToolError(error.getText());  // the document changed since it was read
    }
  }

  std::unique_ptr<msg::Message> found(handler.getMessage(key.first.c_str(), key.second.c_str()));
  if (!found) {
    const std::string present = languagesOf(catalogue, key);
    throw ToolError("show: " + key.first + ':' + key.second +
                    (present.empty()
                         ? std::string(" is not in the catalogue")
                         : " has no text in the languages asked for; it has " + present));
  }
  // Before anything is filled in, a plural record holds its `other` text,
  // which has every placeholder.
  const std::set<unsigned> numbers = placeholderNumbers(found->getText());
  std::cout << key.first << ':' << key.second << " (" << found->getLanguage().toString() << ", "
            << msg::severityText(found->getSeverityLevel())
            << chosenForm(catalogue, key, *found, arguments) << ")\n";

  const std::size_t needed = numbers.empty() ? 0 : *numbers.rbegin() + 1;
  if (arguments.size() != needed) {
    std::cerr << "msgtool: note: the text has placeholders " << describePlaceholders(numbers)
              << "; " << arguments.size() << " argument(s) given\n";
  }

  setChannel(handler, options.width);
  handler.setSeverityLevel(msg::info);
  msg::Message message(&handler, key.first.c_str(), key.second.c_str());
  handler.writeMessageN(message, static_cast<unsigned>(arguments.size()), arguments.data());
  return kExitClean;
}

Action setUpShow(CLI::App& command) {
  auto options = std::make_shared<ShowOptions>();
  command
      .add_option("--languages", options->languages,
                  "Preferred languages, best first, e.g. de-AT,de,en (default: from "
                  "LANGUAGE, LC_ALL, LC_MESSAGES, LANG)")
      ->type_name("LIST");
  command
      .add_option("--width", options->width,
                  "Wrap the text at this many columns, as FormattingMessageChannel does")
      ->type_name("N");
  command
      .add_option("ARGUMENTS", options->words,
                  "FILE... [--] NAMESPACE IDENTIFIER [ARG...]: message documents, then the key, "
                  "then the arguments &0, &1, ...")
      ->required()
      ->option_text("... [--] ...");
  return [options] { return runShow(*options); };
}

const SubcommandRegistration registration(
    {"show", "Show a message as the library renders it, with arguments filled in",
     "The documents are the leading arguments that end in .xml or name a file;\n"
     "then come the key's namespace and identifier, then the arguments &0, &1, ...\n"
     "Put -- before the namespace when a file has its name.\n",
     "msgtool show --languages de-AT,de,en app.xml app diskspace 12 /home\n"
     "msgtool show app.xml -- app diskspace 12 /home\n",
     "0  shown\n"
     "2  usage error, a document that cannot be loaded, or no such message\n",
     setUpShow, true});

}  // namespace

}  // namespace msgtool
