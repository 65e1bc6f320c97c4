// A tour of the message core: one key in three languages, messages with
// arguments, severity filtering, an unknown key and a child handler.
//
// Headings go to std::cout; the messages themselves come out of the
// handler's channel on std::cerr: a formatting channel that writes
//   [namespace:identifier] text
// wrapped at 40 columns, with further lines of a message indented.

#include <iostream>

#include <msg/msg.h>

namespace {

// Catalogue entries of this program. Static objects link themselves into the
// process-wide handler while the program starts, before main runs; their
// strings are constants, so nothing is copied.
msg::MTE greetingEn(msg::info, "en", "demo", "greeting", "Hello, &0!", nullptr, false, false);
msg::MTE greetingDe(msg::info, "de", "demo", "greeting", "Guten Tag, &0!", nullptr, false, false);
msg::MTE greetingDeAt(msg::info, "de-AT", "demo", "greeting", "Servus, &0!", nullptr, false, false);

msg::MTE orderEn(msg::info, "en", "demo", "order",
                 "Order &0: &1 parcels, &2 kg in total, express: &3.", nullptr, false, false);

msg::MTE diskInfo(msg::info, "en", "demo", "diskcheck", "Disk check finished.", nullptr, false,
                  false);
msg::MTE diskWarning(msg::warning, "en", "demo", "diskspace", "Only &0 MB left on &1.", nullptr,
                     false, false);

void heading(const char* title) {
  std::cout << "\n== " << title << " ==" << std::endl;
}

// Where the messages go. Every record in this program passes through here.
// The formatting channel puts the key in brackets ahead of the text and
// wraps at column 39 (40 characters a line); every line after the first of a
// message starts in column 4, the first one in column 0 (indent -4). The
// channel is static, so it outlives every use, and the handler does not own
// it; the child handler below shares it.
void setUpOutput(msg::MessageHandler& handler) {
  static msg::FormattingMessageChannel channel;
  channel.setTextHeaderFormat("[&n:&i] &t");
  channel.setRightMargin(39);
  channel.setLeftMargin(4);
  channel.setIndent(-4);
  handler.setMessageChannel(&channel, false);
}

void showLanguageChoice(msg::MessageHandler& handler) {
  heading("One key, three languages");
  std::cout << "Entries of demo:greeting exist in en, de and de-AT." << std::endl;

  struct Preference {
    const char* label;
    msg::LanguageList list;
  };
  const msg::Language austrianFirst[] = {"de-AT", "de", "en"};
  const Preference preferences[] = {
      {"[en]", msg::LanguageList(msg::Language("en"))},
      {"[de]", msg::LanguageList(msg::Language("de"))},
      {"[de-AT, de, en]", msg::LanguageList(3, austrianFirst)},
  };
  for (const Preference& preference : preferences) {
    handler.setLanguageList(preference.list);
    msg::Message greeting(&handler, "demo", "greeting");
    std::cout << "List " << preference.label << " picks " << greeting.getLanguage().toString()
              << ":" << std::endl;
    handler.writeMessage1(greeting, "reader");
  }
  handler.setLanguageList(msg::LanguageList(msg::Language("en")));
}

void showArguments(msg::MessageHandler& handler) {
  heading("Arguments: text, whole number, decimal number, yes/no");
  msg::Message order(&handler, "demo", "order");
  std::cout << "Catalogue text: " << order.getText() << std::endl;
  order.substitute(0, "A-17");
  order.substitute(1, 3);
  order.substitute(2, 12.5, 2);
  order.substitute(3, true, msg::Message::yesNo);
  handler.writeMessage(order);
}

void showSeverityFilter(msg::MessageHandler& handler) {
  heading("Severity threshold");
  msg::Message finished(&handler, "demo", "diskcheck");
  msg::Message lowSpace(&handler, "demo", "diskspace");

  std::cout << "Threshold info: both records are written." << std::endl;
  handler.writeMessage(finished);
  handler.writeMessage2(lowSpace, "120", "/var");

  handler.setSeverityLevel(msg::warning);
  std::cout << "Threshold warning: the info record is filtered out." << std::endl;
  handler.writeMessage(finished);
  handler.writeMessage2(lowSpace, "80", "/var");
  handler.setSeverityLevel(msg::info);
}

void showUnknownKey(msg::MessageHandler& handler) {
  heading("Unknown key");
  msg::Message missing(&handler, "demo", "nosuchkey");
  std::cout << "Asked for demo:nosuchkey, got the library's not-found message:" << std::endl;
  handler.writeMessage(missing);
}

void showChildHandler(msg::MessageHandler& parent) {
  heading("Child handler falling back on its parent");
  msg::MessageHandler child(&parent);
  child.setLanguageList(msg::LanguageList(msg::Language("de"), msg::Language("en")));
  // An entry with copied strings, made with new: the child's table owns it
  // and deletes it with the child.
  new msg::MTE(msg::info, "de", "demo", "childonly", "Nur der Kind-Handler kennt diesen Text.",
               &child, false, true);

  std::cout << "demo:childonly stands in the child's own table:" << std::endl;
  msg::Message own(&child, "demo", "childonly");
  child.writeMessage(own);

  std::cout << "demo:greeting stands only in the parent, which ranks by its own list [en]:"
            << std::endl;
  msg::Message inherited(&child, "demo", "greeting");
  child.writeMessage1(inherited, "child");
}

}  // namespace

int main() {
  msg::MessageHandler& handler = *msg::MessageHandler::object();
  setUpOutput(handler);
  std::cout << "msg demo: each message is [namespace:identifier] text, wrapped at 40 columns"
            << std::endl;

  showLanguageChoice(handler);
  showArguments(handler);
  showSeverityFilter(handler);
  showUnknownKey(handler);
  showChildHandler(handler);
  return 0;
}
