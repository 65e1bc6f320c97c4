// Message: numbers and booleans as arguments. Each is turned into text in a
// local buffer and then substituted like a string.

#include "msg/Message.h"

#include <cstdio>
#include <memory>

#include "message_core/NumberFormat.h"
#include "msg/MessageHandler.h"
#include "msg/Number.h"

namespace msg {
namespace {

// Room for the text of one number, terminator included.
constexpr int kNumberBufferSize = 32;

// Decimals shown at most.
constexpr int kMaxPrecision = 16;

}  // namespace

bool Message::substitute(unsigned int number, int value) {
  char formatted[kNumberBufferSize];
  std::snprintf(formatted, sizeof formatted, "%d", value);
  return substitute(number, static_cast<const char*>(formatted));
}

bool Message::substitute(unsigned int number, double value, int precision) {
  char formatted[kNumberBufferSize];
  if (precision <= 0 && value == 0.0) {
    std::snprintf(formatted, sizeof formatted, "%1.1f", value);
  } else {
    const int decimals =
        precision > kMaxPrecision ? kMaxPrecision : (precision < 0 ? 0 : precision);
    const int length = std::snprintf(formatted, sizeof formatted, "%.*f", decimals, value);
    // snprintf cut the fixed text short; a cut number would show a wrong
    // value, so show it in exponential notation. With at most 16 decimals
    // that takes at most 24 characters ("-1.0000000000000000e+308").
    if (length < 0 || length >= kNumberBufferSize) {
      std::snprintf(formatted, sizeof formatted, "%.*e", decimals, value);
    }
  }
  return substitute(number, static_cast<const char*>(formatted));
}

bool Message::substitute(unsigned int number, const NumberArgument& value) {
  // The record's language is that of the text the table chose for it.
  NumberText written;
  formatNumber(numberSymbolsFor(language), value, written);
  return substituteValue(number, written.shown, written.plain);
}

bool Message::substitute(unsigned int number, bool value, BoolOption option) {
  return substitute(number, boolText(value, option));
}

const char* Message::boolText(bool value, BoolOption option) const {
  const bool asYesNo = option == yesNo;
  const char* key = asYesNo ? (value ? "yes" : "no") : (value ? "true" : "false");

  // The word follows the process-wide handler's languages, not the handler
  // this record came from. The text belongs to the table entry and outlives
  // the record that leads to it.
  std::unique_ptr<Message> entry(MessageHandler::object()->getMessage("msg", key));
  if (entry != nullptr && entry->text != nullptr) {
    return entry->text;
  }

  // Without a catalogue entry the record's own language decides; its region
  // does not count, so "de-AT" reads German.
  const bool german = language.tagChars[0] == 'd' && language.tagChars[1] == 'e';
  if (german) {
    return asYesNo ? (value ? "Ja" : "Nein") : (value ? "Wahr" : "Falsch");
  }
  return asYesNo ? (value ? "yes" : "no") : (value ? "true" : "false");
}

}  // namespace msg
