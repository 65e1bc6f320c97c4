// Compiled, never run, by the headers.strict.* tests: every public class used
// the way an application uses it, built with the warnings of a strict user
// project and -Werror (tests/cmake/strict_headers.cmake). A warning that a
// public header causes inside user code fails the build.
//
// To cover a new public header or call, add a function below and call it
// from main().

#include <msg/msg.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

namespace {

// Tags of every length the packing reads: literals, which show an optimiser
// the array bounds, and choices between literals.
int useLanguages(int argc) {
  const msg::Language tags[] = {"", "d", "de", "de-", "de-A", "de-AT", "de-AT-1996", nullptr};
  int sum = 0;
  for (int number : {0, 1, 2}) {
    const msg::Language chosen(number == argc ? "de" : (argc > 3 ? "en" : "d"));
    for (const msg::Language& tag : tags) {
      sum += tag.hasRegion() && tag != chosen ? 1 : 0;
    }
  }
  const msg::Language list[] = {"de-AT", "de", "en"};
  msg::LanguageList languages(3, list);
  languages = msg::LanguageList(msg::Language("fr"), msg::Language("en"));
  return sum + languages.distance("en") + languages.getCount() +
         static_cast<int>(languages.getLanguage(0).toString().size());
}

class CountingChannel : public msg::MessageChannel {
 public:
  int count = 0;

 protected:
  void onMessage(const msg::Message& message) override {
    count += message.getSeverityLevel() >= msg::warning ? 1 : 0;
  }
};

class LineChannel : public msg::FormattingMessageChannel {
 public:
  std::string lines;
  void onMessageLine(bool firstLine, bool lastLine, const char* line) override {
    lines += firstLine ? line : "";
    lines += lastLine ? "." : "";
  }
};

// Entries, records with every kind of argument, both kinds of channel.
int useHandler(msg::MessageHandler& handler) {
  msg::MTE entry(msg::warning, "en", "strict", "used", "&0 &1 &2 &3", &handler, false, true);
  auto* counting = new CountingChannel;
  handler.setMessageChannel(counting, true);
  LineChannel lines;
  lines.setLeftMargin(2);
  lines.setIndent(-2);
  lines.setTextHeaderFormat("&n:&i: &t");
  handler.setMessageChannel2(&lines, false);
  handler.setSeverityLevel(msg::info);
  handler.setLanguageList(msg::LanguageList(msg::Language("en")));

  msg::Message message(&handler, "strict", "used");
  message.substitute(0, 512);
  message.substitute(1, 2.5, 2);
  message.substitute(2u, true, msg::Message::yesNo);
  message.substitute(3, "/var");
  handler.writeMessage(message);
  const char* arguments[] = {"a", "b", "c"};
  handler.writeMessageN(message, 3, arguments);
  handler.writeMessage2(message, "a", "b");
  message.clean();
  delete handler.getMessageNotFound();
  handler.setMessageChannel2(nullptr, false);
  msg::Message own("strict", "own", msg::error, msg::Language("en"), "text");
  return counting->count + static_cast<int>(lines.lines.size() + message.getBufferSize()) +
         (own.getLanguage() == entry.getLanguage() ? 1 : 0);
}

// Every exception the library throws, caught by its own type.
int useExceptions(int argc) {
  try {
    msg::MessageHandlerX::object()->loadMessageDocument(argc > 1 ? "a.xml" : "b.xml");
  } catch (const msg::ErrorInMessageDocument& e) {
    int sum = 0;
    for (const msg::DocumentProblem& problem : e.getProblems()) {
      sum += problem.line + problem.column + static_cast<int>(problem.file.size());
    }
    return sum + e.getText()[0];
  } catch (const msg::MessageExists& e) {
    return e.getNamespace()[0] + e.getIdentifier()[0];
  } catch (const msg::MessageNotFound& e) {
    return e.getNamespace()[0];
  } catch (const msg::MessageHandlerError& e) {
    return e.getText()[0];
  } catch (const XercesXML::ParsingError& e) {
    return static_cast<int>(e.getText().size());
  } catch (const structured_exception& e) {
    return static_cast<int>(e.getExceptionCode() + e.getArgumentCount()) +
           (e.getMessageText() != nullptr ? 1 : 0);
  }
  return 0;
}

// The typed layer with every kind of argument, lists as people write them,
// the log channels and the compiled catalogue.
int useTypedLayer(msg::MessageHandler& handler, int argc) {
  static constexpr msg::Key<3> key{"strict", "typed"};
  msg::MTE entry(msg::info, "en", "strict", "typed", "&0 &1 &2", &handler, false, true);
  handler.setLanguageList(msg::LanguageList{"de-AT", "de", "en"});
  handler.setLanguageList(msg::LanguageList::parse("de-AT,de,en"));
  handler.setLanguageList(msg::LanguageList::fromEnvironment());
  std::ostringstream json;
  msg::JsonLinesMessageChannel lines(json);
  msg::SyslogMessageChannel system(msg::SyslogMessageChannel::userFacility);
  handler.setMessageChannel(&lines, false);
  handler.setMessageChannel2(&system, false);
  const std::int64_t wide = argc;
  const unsigned short small = 7;
  msg::write(handler, key, wide, msg::fixed(2.5, 1), msg::yesNo(argc > 1));
  msg::write(&handler, "strict", "typed", small, 1.5f, std::string_view("/var"));
  const std::string text = msg::format(handler, key, std::string("a"), "b", true);
  const std::unique_ptr<msg::Message> record = msg::getMessage(handler, key);
  handler.setMessageChannel(nullptr, false);
  handler.setMessageChannel2(nullptr, false);
  try {
    msg::MessageHandlerX::object()->loadCompiledCatalogue(argc > 1 ? "a.msgc" : "b.msgc");
  } catch (const msg::ErrorInMessageDocument& e) {
    return static_cast<int>(e.getProblems().size());
  }
  return static_cast<int>(text.size() + json.str().size()) + (record ? 1 : 0) +
         msg::SyslogMessageChannel::levelOf(msg::warning) + (entry.getOwnsStrings() ? 1 : 0);
}

// The version macros are integer constants usable in #if (that the string
// spells them is SharedLibraryTest's).
#if MSG_VERSION_MAJOR < 0 || MSG_VERSION_MINOR < 0 || MSG_VERSION_PATCH < 0
#error "msg/version.h: a version number is not a non-negative integer"
#endif

}  // namespace

int main(int argc, char**) {
  msg::MessageHandler handler(msg::MessageHandler::object());
  return useLanguages(argc) + useHandler(handler) + useExceptions(argc) +
         useTypedLayer(handler, argc);
}
