// A program that links msg's core alone (msg::core, pkg-config msg-core):
// it loads the compiled catalogue made of messages.xml into the
// process-wide handler, looks up one message, and then reads its own
// mappings to show that the core brought no XML, network or TLS library
// with it. It prints "consumer:core: Auf Wiedersehen, &0." on standard error
// and exits with 0 only if all of that held.

#include <msg/msg.h>

#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace {

// Libraries the whole msg loads through Xerces-C (which Debian builds with
// libcurl and GnuTLS) and the documents library itself.
const char* const kForeignLibraries[] = {"/libmsg.so", "libxerces-c", "libcurl",      "libgnutls",
                                         "libssl",     "libnettle",   "libcrypto.so", "libicui18n"};

}  // namespace

int main() {
  msg::MessageHandler* handler = msg::MessageHandler::object();
  handler->setLanguageList(msg::LanguageList(msg::Language("de"), msg::Language("en")));
  try {
    handler->loadCompiledCatalogue(CONSUMER_CATALOGUE);
  } catch (const msg::ErrorInMessageDocument& error) {
    std::cerr << error.getText() << '\n';
    return 1;
  }
  std::unique_ptr<msg::Message> farewell(handler->getMessage("consumer", "farewell"));
  if (farewell == nullptr || std::strcmp(farewell->getText(), "Auf Wiedersehen, &0.") != 0) {
    std::cerr << "the compiled catalogue does not give consumer:farewell in German\n";
    return 1;
  }
  std::cerr << "consumer:core: " << farewell->getText() << '\n';

  std::ifstream file("/proc/self/maps");
  const std::string maps((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (maps.find("libmsg-core.so") == std::string::npos) {
    std::cerr << "cannot read the mappings, or libmsg-core.so is not among them:\n" << maps;
    return 1;
  }
  for (const char* library : kForeignLibraries) {
    if (maps.find(library) != std::string::npos) {
      std::cerr << library << " is mapped into a program that links only the core:\n" << maps;
      return 1;
    }
  }
  return 0;
}
