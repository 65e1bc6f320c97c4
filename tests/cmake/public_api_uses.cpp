// Compiled, never run, by the headers.strict.* tests: every public class used
// the way an application uses it, in a file built with the warning flags of
// a strict user project and -Werror (tests/cmake/strict_headers.cmake).
// A warning that a public header causes inside user code fails the build.
//
// To cover a new public header or call, add a function below; it need not be
// called from anywhere.

#include <msg/msg.h>

#include <cstdio>
#include <string>

namespace {

// Tags of every length the packing reads, as literals (which let an
// optimiser see the array bounds) and as a runtime choice between literals.
int useLanguage(int argc) {
  const msg::Language tags[] = {"", "d", "de", "de-", "de-A", "de-AT", "de-AT-1996", nullptr};
  const msg::Language chosen(argc > 1 ? "en" : "d");
  int regions = chosen.hasRegion() ? 1 : 0;
  for (const msg::Language& tag : tags) {
    regions += tag.hasRegion() && tag != chosen ? 1 : 0;
  }
  for (int number : {0, 1, 2}) {
    regions += msg::Language(number == argc ? "de" : "en") == chosen ? 1 : 0;
  }
  return regions + static_cast<int>(chosen.toString().size());
}

int useLanguageList() {
  const msg::Language languages[] = {"de-AT", "de", "en"};
  msg::LanguageList list(3, languages);
  msg::LanguageList copy(msg::Language("fr"), msg::Language("en"));
  copy = list;
  return copy.distance("de") + copy.getCount() + (copy.getLanguage(0) == "de-AT" ? 1 : 0);
}

// An entry, a record filled with every kind of argument, and a write.
int useCatalogueAndRecord(msg::MessageHandler& handler) {
  msg::MTE entry(msg::warning, "en", "strict", "used", "&0 &1 &2 &3", &handler, false, true);
  msg::Message message(&handler, "strict", "used");
  message.substitute(0, 512);
  message.substitute(1, 2.5, 2);
  message.substitute(2u, true, msg::Message::yesNo);
  message.substitute(3, "/var");
  handler.writeMessage(message);
  handler.writeMessage2(message, "a", "b");
  const char* arguments[] = {"a", "b", "c"};
  handler.writeMessageN(message, 3, arguments);
  message.clean();
  message.clear();
  msg::Message own("strict", "own", msg::error, msg::Language("en"), "text");
  return static_cast<int>(message.getBufferSize()) + entry.getSeverity() +
         (own.getLanguage() == entry.getLanguage() ? 1 : 0);
}

// A channel of the application's own and the formatting channel.
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
    lines += firstLine ? "" : "\n";
    lines += line;
    lines += lastLine ? "." : "";
  }
};

int useChannels(msg::MessageHandler& handler) {
  auto* counting = new CountingChannel;
  handler.setMessageChannel(counting, true);
  LineChannel lines;
  lines.setLeftMargin(2);
  lines.setRightMargin(40);
  lines.setIndent(-2);
  lines.setTextHeaderFormat("&n:&i: &t");
  handler.setMessageChannel2(&lines, false);
  handler.setSeverityLevel(msg::info);
  handler.setLanguageList(msg::LanguageList(msg::Language("en")));
  msg::Message* found = handler.getMessage("strict", "missing");
  msg::Message* notFound = handler.getMessageNotFound();
  delete found;
  delete notFound;
  handler.setMessageChannel2(nullptr, false);
  return counting->count + static_cast<int>(lines.lines.size()) +
         (handler.getMessageChannelOwnership() ? 1 : 0);
}

// Every exception the library throws, caught by its own type.
int useExceptions(int argc) {
  try {
    msg::MessageHandlerX::object()->loadMessageDocument(argc > 1 ? "a.xml" : "b.xml");
    msg::MTE(msg::info, "en", "strict", "twice", "x", nullptr, true, false);
  } catch (const msg::ErrorInMessageDocument& e) {
    int lines = 0;
    for (const msg::DocumentProblem& problem : e.getProblems()) {
      lines += problem.line + problem.column + static_cast<int>(problem.file.size());
    }
    return lines + static_cast<int>(std::string(e.getText()).size());
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

}  // namespace

int main(int argc, char**) {
  msg::MessageHandler handler(msg::MessageHandler::object());
  const int sum = useLanguage(argc) + useLanguageList() + useCatalogueAndRecord(handler) +
                  useChannels(handler) + useExceptions(argc);
  std::printf("%d\n", sum);
  return 0;
}
