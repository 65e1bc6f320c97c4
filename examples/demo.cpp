// A tour of msg with a catalogue read from XML message documents.
//
//   demo [--documents DIR] [LANGUAGE ...]
//
// It loads DIR/demo.xml (which includes demo-reports.xml) with the language
// list given on the command line (default: en de de-AT), then shows the
// same messages under several language lists, arguments of every type, a
// plural message in English, Polish and Arabic (from demo-plurals.xml),
// numbers as German and French write them, a formatting channel that wraps, the severity threshold,
// an unknown key, the catalogue text of an exception, and a broken document being rejected. Last,
// it loads the same catalogue from its compiled form (made at build time by msgtool compile) and
// prints both load times.
//
// Headings and explanations are plain lines; every message comes out of the
// handler's formatting channel, indented and with its key in brackets.

#include <chrono>
#include <clocale>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include <msg/msg.h>

namespace {

// A formatting channel that writes to standard output, so that the messages
// stand in order with the explanations around them.
class ConsoleChannel : public msg::FormattingMessageChannel {
 public:
  // "[namespace:identifier] text", first line from column 2, further lines
  // from column 6, at most 76 columns.
  ConsoleChannel() {
    setTextHeaderFormat("[&n:&i] &t");
    setLeftMargin(6);
    setIndent(-4);
    setRightMargin(75);
  }

  void onMessageLine(bool, bool, const char* line) override { std::cout << line << '\n'; }
};

struct Options {
  std::string documents = MSG_EXAMPLES_DIR "/catalogue";
  std::vector<std::string> languages;
};

void printUsage() {
  std::cout << "usage: demo [--documents DIR] [LANGUAGE ...]\n"
               "  DIR       folder of demo.xml (default " MSG_EXAMPLES_DIR
               "/catalogue)\n"
               "  LANGUAGE  tags such as en, de or de-AT, best first, also comma-separated\n"
               "            (default: en de de-AT)\n";
}

// Returns false if the program should stop (help asked for, or a bad option).
bool parseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h") {
      printUsage();
      return false;
    }
    if (argument == "--documents" || argument == "-d") {
      if (i + 1 == argc) {
        printUsage();
        return false;
      }
      options.documents = argv[++i];
      continue;
    }
    std::size_t start = 0;
    while (start <= argument.size()) {
      const std::size_t comma = argument.find(',', start);
      const std::size_t end = comma == std::string::npos ? argument.size() : comma;
      if (end > start) {
        options.languages.push_back(argument.substr(start, end - start));
      }
      start = end + 1;
    }
  }
  if (options.languages.empty()) {
    options.languages = {"en", "de", "de-AT"};
  }
  return true;
}

msg::LanguageList makeList(const std::vector<std::string>& tags) {
  std::vector<msg::Language> languages;
  for (const std::string& tag : tags) {
    languages.push_back(msg::Language(tag.c_str()));
  }
  return msg::LanguageList(static_cast<int>(languages.size()), languages.data());
}

std::string describe(const msg::LanguageList& list) {
  std::string text = "[";
  for (int i = 0; i < list.getCount(); ++i) {
    text += (i > 0 ? ", " : "") + list.getLanguage(i).toString();
  }
  return text + "]";
}

void heading(const char* title) {
  std::cout << "\n== " << title << " ==\n";
}

void showLanguageLists(msg::MessageHandler& handler, const msg::LanguageList& loaded) {
  heading("One key under several language lists");
  std::cout << "demo:greeting has texts in en, de and de-AT. The load kept those that\n"
               "the list "
            << describe(loaded) << " accepts.\n";
  const msg::Language austrianFirst[] = {"de-AT", "de", "en"};
  const msg::Language frenchFirst[] = {"fr", "en"};
  const msg::LanguageList lists[] = {
      msg::LanguageList(msg::Language("en")), msg::LanguageList(msg::Language("de")),
      msg::LanguageList(3, austrianFirst), msg::LanguageList(2, frenchFirst)};
  for (const msg::LanguageList& list : lists) {
    handler.setLanguageList(list);
    msg::Message greeting(&handler, "demo", "greeting");
    if (std::strcmp(greeting.getIdentifier(), "notfound") == 0) {
      // The key shows in the not-found text as long as nothing is substituted.
      std::cout << "List " << describe(list) << " accepts none of the loaded texts:\n";
      handler.writeMessage(greeting);
      continue;
    }
    std::cout << "List " << describe(list) << " picks " << greeting.getLanguage().toString()
              << ":\n";
    handler.writeMessage1(greeting, "reader");
  }
  handler.setLanguageList(loaded);
}

void showArguments(msg::MessageHandler& handler) {
  heading("Arguments: text, whole number, decimal number, yes/no, true/false");
  msg::Message order(&handler, "demo", "order");
  std::cout << "Catalogue text (" << order.getLanguage().toString() << "): " << order.getText()
            << "\n";
  order.substitute(0, "A-17");
  order.substitute(1, 3);
  order.substitute(2, 12.5, 2);
  order.substitute(3, true, msg::Message::yesNo);
  order.substitute(4, false, msg::Message::trueFalse);
  handler.writeMessage(order);
}

// A handler of its own, so that the load keeps the three languages whatever
// the demo's list is.
void showPlurals(const std::string& path) {
  heading("Plural forms in three languages");
  std::cout << "demo:deleted has the forms each language needs: English one and other\n"
               "(and =0), Polish one, few, many and other, Arabic all six. The count as\n"
               "it is shown chooses the form: 1 is one in English, 1.0 is other.\n";
  msg::MessageHandlerX plurals;
  plurals.setMessageChannel(new ConsoleChannel(), true);
  const msg::Language all[] = {"en", "pl", "ar"};
  plurals.setLanguageList(msg::LanguageList(3, all));
  try {
    plurals.loadMessageDocument(path.c_str());
  } catch (const msg::ErrorInMessageDocument& failure) {
    std::cout << "demo-plurals.xml could not be loaded: " << failure.getText() << "\n";
    return;
  }
  for (const msg::Language& language : all) {
    plurals.setLanguageList(msg::LanguageList(language));
    std::cout << language.toString() << ":\n";
    for (const int count : {0, 1, 2, 5, 22}) {
      msg::write(plurals, "demo", "deleted", count);
    }
    msg::write(plurals, "demo", "deleted", msg::fixed(1.0, 1));
  }
}

// Entries made in code, in a handler of their own, so that each language
// list below finds exactly one text. The handler's table owns them.
void showNumbers() {
  heading("Numbers as German and French write them");
  std::cout << "msg::number and msg::percent are written as the language of the chosen\n"
               "text writes numbers: German groups with \".\" and French with a narrow\n"
               "no-break space, each with its decimal comma. A plain double keeps its C\n"
               "form in every language.\n";
  msg::MessageHandler numbers;
  numbers.setMessageChannel(new ConsoleChannel(), true);
  new msg::MTE(msg::info, "de", "demo", "usage",
               "&0 Bytes belegt, &1 des Speichers (als double: &2).", &numbers, false, true);
  new msg::MTE(msg::info, "fr", "demo", "usage",
               "&0 octets occupés, &1 de la mémoire (en double : &2).", &numbers, false, true);
  for (const char* language : {"de", "fr"}) {
    numbers.setLanguageList(msg::LanguageList::parse(language));
    msg::write(numbers, "demo", "usage", msg::number(1234567.891), msg::percent(87.5, 1),
               1234567.891);
  }
}

void showWrapping(msg::MessageHandler& handler) {
  heading("A formatting channel that wraps");
  std::cout << "Every message here went through a FormattingMessageChannel with the\n"
               "header format \"[&n:&i] &t\": lines of at most 76 columns, broken\n"
               "between words, the first line from column 2, the others from column 6.\n";
  msg::Message notice(&handler, "demo", "maintenance");
  handler.writeMessage1(notice, "//archive/projects");

  // A Japanese text, 24 columns wide: an ideograph takes two columns, lines
  // break between characters but never before a full stop, and the line
  // feed in the text ends a line.
  std::cout << "\nA Japanese text, only the text, from column 2, 24 columns wide:\n";
  ConsoleChannel narrow;
  narrow.setTextHeaderFormat("&t");
  narrow.setLeftMargin(2);
  narrow.setIndent(0);
  narrow.setRightMargin(23);
  const msg::Message japanese(
      "demo", "maintenance", msg::info, msg::Language("ja"),
      "\xE4\xBB\x8A\xE5\xA4\x9C\xE3\x80\x81\xE3\x82\xA2\xE3\x83\xBC\xE3\x82\xAB"
      "\xE3\x82\xA4\xE3\x83\x96\xE3\x82\x92\xE5\x86\x8D\xE7\xB7\xA8\xE6\x88\x90"
      "\xE3\x81\x97\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82\n\xE3\x83\x95\xE3\x82\xA1"
      "\xE3\x82\xA4\xE3\x83\xAB\xE3\x81\xAF\xE3\x81\x9D\xE3\x81\xAE\xE9\x96\x93"
      "\xE3\x82\x82\xE8\xAA\xAD\xE3\x82\x81\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82");
  narrow.onMessage(japanese);
}

void showThreshold(msg::MessageHandler& handler) {
  heading("Severity threshold");
  msg::Message finished(&handler, "demo", "diskcheck");
  msg::Message lowSpace(&handler, "demo", "diskspace");

  std::cout << "Threshold info: the info and the warning are written.\n";
  handler.writeMessage(finished);
  handler.writeMessage2(lowSpace, "120", "/var");

  handler.setSeverityLevel(msg::warning);
  std::cout << "Threshold warning: the info message is held back.\n";
  handler.writeMessage(finished);
  handler.writeMessage2(lowSpace, "80", "/var");
  handler.setSeverityLevel(msg::info);
}

void showUnknownKey(msg::MessageHandler& handler) {
  heading("Unknown key");
  std::cout << "Asking for demo:nosuchkey gives the not-found message with the key:\n";
  msg::Message missing(&handler, "demo", "nosuchkey");
  handler.writeMessage(missing);
}

void showException() {
  heading("An exception with a catalogue text");
  std::cout << "The XML layer raises its failures as XercesXML exceptions, which derive\n"
               "from structured_exception. One is thrown and caught here:\n";
  try {
    throw XercesXML::ParsingError("settings.xml, line 3, column 7: expected end of tag 'Port'");
  } catch (const structured_exception& exception) {
    std::cout << "  what():           " << exception.what() << "\n"
              << "  key:              " << exception.getMessageNamespace() << ":"
              << exception.getMessageIdentifier() << "\n"
              << "  getMessageText(): " << exception.getMessageText() << "\n";
  }
}

void showBrokenDocument(msg::MessageHandlerX& handler, const std::string& path) {
  heading("A broken document");
  std::cout << "broken.xml is not well formed. Loading it writes the application's\n"
               "report msgx:MessageDocumentError and throws ErrorInMessageDocument:\n";
  try {
    handler.loadMessageDocument(path.c_str());
    std::cout << "(unexpected: the document was loaded)\n";
  } catch (const msg::ErrorInMessageDocument& failure) {
    std::cout << "Caught ErrorInMessageDocument: " << failure.getText() << "\n";
  }
  std::cout << "The catalogue is as it was; broken.xml's own demo:greeting never got in:\n";
  msg::Message greeting(&handler, "demo", "greeting");
  handler.writeMessage1(greeting, "reader");
}

double millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

// The same catalogue from the file `msgtool compile` made of it at build
// time: mapped, checked and registered without copying a string.
void showCompiledCatalogue(const msg::LanguageList& languages, double documentMilliseconds) {
#ifdef MSG_DEMO_COMPILED_CATALOGUE
  heading("The same catalogue, compiled");
  msg::MessageHandlerX compiled;
  compiled.setMessageChannel(new ConsoleChannel(), true);
  compiled.setLanguageList(languages);
  const auto start = std::chrono::steady_clock::now();
  compiled.loadCompiledCatalogue(MSG_DEMO_COMPILED_CATALOGUE);
  const double compiledMilliseconds = millisecondsSince(start);
  std::cout << std::fixed << std::setprecision(3) << "Loading demo.xml took "
            << documentMilliseconds << " ms; loading " << MSG_DEMO_COMPILED_CATALOGUE << " took "
            << compiledMilliseconds << " ms.\nIt gives the same messages:\n";
  msg::Message greeting(&compiled, "demo", "greeting");
  compiled.writeMessage1(greeting, "reader");
#else
  (void)languages;
  std::cout << "\nLoading demo.xml took " << documentMilliseconds
            << " ms (build with msgtool to compare the compiled catalogue).\n";
#endif
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parseOptions(argc, argv, options)) {
    return 2;
  }
  // The XML system takes its code page when it starts, so the locale is set
  // before the first MessageHandlerX. Document texts then arrive in that code
  // page (UTF-8 with Debian's Xerces-C).
  std::setlocale(LC_ALL, "");

  // Put the document handler in front of the process-wide one, give it this
  // program's output, and set its language list before the load: texts in
  // other languages are left out while reading.
  msg::MessageHandlerX& handler = *msg::MessageHandlerX::object();
  static ConsoleChannel channel;
  handler.setMessageChannel(&channel, false);
  const msg::LanguageList languages = makeList(options.languages);
  handler.setLanguageList(languages);

  const std::string catalogue = options.documents + "/demo.xml";
  std::cout << "msg demo: messages from an XML catalogue\n"
            << "Catalogue: " << catalogue << " (and demo-reports.xml, included)\n"
            << "Languages: " << describe(languages)
            << " (choose others: demo de-AT de en; demo --help)\n";
  const auto loadStart = std::chrono::steady_clock::now();
  try {
    handler.loadMessageDocument(catalogue.c_str());
  } catch (const msg::ErrorInMessageDocument& failure) {
    std::cout << "The catalogue could not be loaded: " << failure.getText() << "\n"
              << "Name the folder of demo.xml with --documents DIR.\n";
    return 1;
  }
  const double documentMilliseconds = millisecondsSince(loadStart);

  showLanguageLists(handler, languages);
  showArguments(handler);
  showPlurals(options.documents + "/demo-plurals.xml");
  showNumbers();
  showWrapping(handler);
  showThreshold(handler);
  showUnknownKey(handler);
  showException();
  showBrokenDocument(handler, options.documents + "/broken.xml");
  showCompiledCatalogue(languages, documentMilliseconds);
  std::cout << std::flush;
  return 0;
}
