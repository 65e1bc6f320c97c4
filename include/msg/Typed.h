// Typed calls: look up, fill in and write a message in one line.

#ifndef MSG_TYPED_H_
#define MSG_TYPED_H_

#include <charconv>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "msg/Message.h"
#include "msg/MessageHandler.h"
#include "msg/Number.h"

namespace msg {

// A catalogue key that knows how many placeholders its texts have (&0 up to
// &Placeholders-1). write() and format() with a Key take exactly that many
// arguments; any other count does not compile. The catalogue tool generates
// keys like
//
//   inline constexpr ::msg::Key<2> diskfull{"app", "diskfull"};
//
// Both strings must outlive the key (string literals do).
template <std::size_t Placeholders>
struct Key {
  // The namespace and identifier of the catalogue entry.
  const char* nameSpace;
  const char* identifier;
  // Placeholders: the number of arguments write() and format() take.
  static constexpr std::size_t placeholders = Placeholders;
};

// The key of a plural message: its texts have `Placeholders` placeholders,
// and the one numbered `CountPlaceholder` holds the count that chooses the
// variant (see docs/message-documents.md). write() and format() with it take
// exactly that many arguments, and the count must be a number: an integer,
// a float or double, msg::fixed() or msg::number(); a string, bool or character there
// does not compile. `msgtool header` generates keys like
//
//   inline constexpr ::msg::PluralKey<2, 0> deleted{"app", "deleted"};
template <std::size_t Placeholders, std::size_t CountPlaceholder = 0>
struct PluralKey {
  static_assert(CountPlaceholder < Placeholders,
                "msg::PluralKey: the count must be one of the key's placeholders");
  // The namespace and identifier of the catalogue entry.
  const char* nameSpace;
  const char* identifier;
  // Placeholders: the number of arguments write() and format() take.
  static constexpr std::size_t placeholders = Placeholders;
  // CountPlaceholder: the number of the placeholder that holds the count.
  static constexpr std::size_t countPlaceholder = CountPlaceholder;
};

// A floating-point argument with its number of decimals; see fixed().
struct FixedArgument {
  double value;  // the number to write
  int decimals;  // as given to fixed(); the substitution clamps it
};

// A boolean argument with its choice of words; see yesNo() and trueFalse().
struct BoolArgument {
  bool value;                 // the value to write
  Message::BoolOption words;  // the words it is written in
};

// `value` with `decimals` decimals (1 to 16; 0 or less gives none, more
// than 16 gives 16). A plain float or double argument gets 6, as printf's
// "%f" does.
constexpr FixedArgument fixed(double value, int decimals) {
  return FixedArgument{value, decimals};
}

// `value` as "yes"/"no" in the reader's language. A plain bool argument gives
// "true"/"false".
constexpr BoolArgument yesNo(bool value) {
  return BoolArgument{value, Message::yesNo};
}
constexpr BoolArgument trueFalse(bool value) {
  return BoolArgument{value, Message::trueFalse};
}

namespace typed_detail {

template <typename T>
inline constexpr bool isCharacter =
    std::is_same_v<T, char> || std::is_same_v<T, signed char> || std::is_same_v<T, unsigned char> ||
    std::is_same_v<T, wchar_t> || std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>
#if defined(__cpp_char8_t)
    || std::is_same_v<T, char8_t>
#endif
    ;

template <typename T>
inline constexpr bool alwaysFalse = false;

// Fills placeholder `number` of `message` with `argument` through the
// matching Message::substitute overload. Returns what substitute returns.
template <typename T>
bool substituteArgument(Message& message, unsigned int number, const T& argument) {
  using Argument = std::decay_t<T>;
  if constexpr (std::is_same_v<Argument, bool>) {
    return message.substitute(number, argument, Message::trueFalse);
  } else if constexpr (std::is_same_v<Argument, BoolArgument>) {
    return message.substitute(number, argument.value, argument.words);
  } else if constexpr (std::is_same_v<Argument, FixedArgument>) {
    return message.substitute(number, argument.value, argument.decimals);
  } else if constexpr (std::is_same_v<Argument, NumberArgument>) {
    return message.substitute(number, argument);
  } else if constexpr (std::is_floating_point_v<Argument>) {
    return message.substitute(number, static_cast<double>(argument), 6);
  } else if constexpr (isCharacter<Argument>) {
    static_assert(alwaysFalse<Argument>,
                  "msg: a character is not a message argument; pass it as a string "
                  "(std::string(1, c)) or as a number (static_cast<int>(c))");
    return false;
  } else if constexpr (std::is_integral_v<Argument>) {
    if constexpr (std::is_signed_v<Argument> ? sizeof(Argument) <= sizeof(int)
                                             : sizeof(Argument) < sizeof(int)) {
      return message.substitute(number, static_cast<int>(argument));
    } else {
      // Wider than int: the same decimal text, made here.
      char digits[24];
      const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits - 1, argument);
      *end.ptr = '\0';
      return message.substitute(number, static_cast<const char*>(digits));
    }
  } else if constexpr (std::is_same_v<Argument, const char*> || std::is_same_v<Argument, char*>) {
    return message.substitute(number, static_cast<const char*>(argument));
  } else if constexpr (std::is_same_v<Argument, std::string>) {
    return message.substitute(number, argument.c_str());
  } else if constexpr (std::is_same_v<Argument, std::string_view>) {
    const std::string copy(argument);  // substitute() needs a terminated string
    return message.substitute(number, copy.c_str());
  } else {
    static_assert(alwaysFalse<Argument>,
                  "msg: unsupported message argument type; pass an integer, a float or double "
                  "(or msg::fixed(value, decimals), msg::number(value), msg::percent(value)), a "
                  "bool (or msg::yesNo/msg::trueFalse), "
                  "a const char*, std::string or std::string_view");
    return false;
  }
}

// True if `message` is the not-found record standing in for another key.
inline bool standsInForMissingKey(const Message& message, const char* nameSpace,
                                  const char* identifier) {
  const char* shownNamespace = message.getNamespace();
  const char* shownIdentifier = message.getIdentifier();
  return shownNamespace != nullptr && shownIdentifier != nullptr &&
         std::strcmp(shownNamespace, "msg") == 0 && std::strcmp(shownIdentifier, "notfound") == 0 &&
         (std::strcmp(nameSpace, "msg") != 0 || std::strcmp(identifier, "notfound") != 0);
}

// The record of the key with the arguments filled in, or the not-found
// record with the key filled in (and the arguments left out).
// Fills &0, &1, ... with the arguments in order; a plural record takes its
// count first, which chooses the variant the others go into.
template <typename... Args>
void fillArguments(Message& message, const Args&... arguments) {
  if (message.isPlural()) {
    const unsigned int count = message.getCountPlaceholder();
    unsigned int number = 0;
    ((number == count ? (void)substituteArgument(message, number, arguments) : (void)0, ++number),
     ...);
    number = 0;
    ((number != count ? (void)substituteArgument(message, number, arguments) : (void)0, ++number),
     ...);
    return;
  }
  unsigned int number = 0;
  (substituteArgument(message, number++, arguments), ...);
}

template <typename... Args>
void fillFound([[maybe_unused]] Message& message, [[maybe_unused]] const char* nameSpace,
               [[maybe_unused]] const char* identifier, const Args&... arguments) {
  if constexpr (sizeof...(Args) > 0) {
    if (!standsInForMissingKey(message, nameSpace, identifier)) {
      fillArguments(message, arguments...);
    }
  }
}

// Whether an argument of type T is a number that can be a plural count:
// an integer or floating-point type other than bool and the character
// types, msg::fixed(), msg::number() or msg::percent(). Strings, booleans
// and characters are not.
template <typename T>
inline constexpr bool isCountArgument = std::is_same_v<std::decay_t<T>, FixedArgument> ||
                                        std::is_same_v<std::decay_t<T>, NumberArgument> ||
                                        (std::is_arithmetic_v<std::decay_t<T>> &&
                                         !std::is_same_v<std::decay_t<T>, bool> &&
                                         !isCharacter<std::decay_t<T>>);

inline std::string shownText(const Message& message) {
  const char* text = message.getMessage();
  return text != nullptr ? std::string(text) : std::string();
}

}  // namespace typed_detail

// Takes back what was filled into `message` and fills &0, &1, ... with the
// arguments in order, each by its type (see write()); a plural record takes
// its count first. An argument whose
// placeholder the text lacks changes nothing.
template <typename... Args>
void fill(Message& message, const Args&... arguments) {
  message.clear();
  if constexpr (sizeof...(Args) > 0) {
    typed_detail::fillArguments(message, arguments...);
  }
}

// Looks up the key in `handler` (as Message(handler, nameSpace, identifier)
// does), fills &0, &1, ... with the arguments in order and writes the record
// through handler.writeMessage(), so the threshold and channels apply.
//
// Arguments: integers (as "%d" gives them), float and double (6 decimals, or
// msg::fixed(value, decimals)), msg::number() and msg::percent() (as the
// language of the message's text writes numbers, see msg/Number.h), bool ("true"/"false", or
// msg::yesNo(value)), const char*, std::string and std::string_view. A null const char* leaves its
// placeholder as it is. Anything else does not compile.
//
// A key that is not found is no failure: the library's not-found message
// ("System error: Message with key app:diskfull not found.") is written
// instead, with its own severity and without the arguments. If the
// language list accepts no not-found message either, MessageNotFound is
// thrown and nothing is written.
//
// The handler is given by reference or by pointer; a null pointer throws
// MessageHandlerError. Each call makes one record of its own, so threads
// may write through one handler that none of them changes.
// REQUIRES: nameSpace and identifier are not null.
template <typename... Args>
void write(MessageHandler& handler, const char* nameSpace, const char* identifier,
           const Args&... arguments) {
  Message message(&handler, nameSpace, identifier);
  typed_detail::fillFound(message, nameSpace, identifier, arguments...);
  handler.writeMessage(message);
}
template <typename... Args>
void write(MessageHandler* handler, const char* nameSpace, const char* identifier,
           const Args&... arguments) {
  Message message(handler, nameSpace, identifier);  // throws on a null handler
  typed_detail::fillFound(message, nameSpace, identifier, arguments...);
  if (handler != nullptr) {  // always true here; says so to the optimiser
    handler->writeMessage(message);
  }
}

// The text write() would send, whatever the threshold: the filled-in text,
// or the not-found text with the key filled in. Throws as write() does.
template <typename... Args>
std::string format(const MessageHandler& handler, const char* nameSpace, const char* identifier,
                   const Args&... arguments) {
  Message message(&handler, nameSpace, identifier);
  typed_detail::fillFound(message, nameSpace, identifier, arguments...);
  return typed_detail::shownText(message);
}
template <typename... Args>
std::string format(const MessageHandler* handler, const char* nameSpace, const char* identifier,
                   const Args&... arguments) {
  Message message(handler, nameSpace, identifier);  // throws on a null handler
  typed_detail::fillFound(message, nameSpace, identifier, arguments...);
  return typed_detail::shownText(message);
}

// The same with a Key: exactly key.placeholders arguments.
template <std::size_t Placeholders, typename Handler, typename... Args>
void write(Handler&& handler, const Key<Placeholders>& key, const Args&... arguments) {
  static_assert(sizeof...(Args) == Placeholders,
                "msg::write: the number of arguments differs from the key's placeholders");
  ::msg::write(handler, key.nameSpace, key.identifier, arguments...);
}
template <std::size_t Placeholders, typename Handler, typename... Args>
std::string format(Handler&& handler, const Key<Placeholders>& key, const Args&... arguments) {
  static_assert(sizeof...(Args) == Placeholders,
                "msg::format: the number of arguments differs from the key's placeholders");
  return ::msg::format(handler, key.nameSpace, key.identifier, arguments...);
}

// The same with a PluralKey: exactly key.placeholders arguments, and a
// number at key.countPlaceholder.
template <std::size_t Placeholders, std::size_t Count, typename Handler, typename... Args>
void write(Handler&& handler, const PluralKey<Placeholders, Count>& key, const Args&... arguments) {
  static_assert(sizeof...(Args) == Placeholders,
                "msg::write: the number of arguments differs from the key's placeholders");
  static_assert(typed_detail::isCountArgument<std::tuple_element_t<Count, std::tuple<Args...>>>,
                "msg: the count of a plural key must be a number (an integer, a float or "
                "double, msg::fixed(value, decimals) or msg::number(value))");
  ::msg::write(handler, key.nameSpace, key.identifier, arguments...);
}
template <std::size_t Placeholders, std::size_t Count, typename Handler, typename... Args>
std::string format(Handler&& handler, const PluralKey<Placeholders, Count>& key,
                   const Args&... arguments) {
  static_assert(sizeof...(Args) == Placeholders,
                "msg::format: the number of arguments differs from the key's placeholders");
  static_assert(typed_detail::isCountArgument<std::tuple_element_t<Count, std::tuple<Args...>>>,
                "msg: the count of a plural key must be a number (an integer, a float or "
                "double, msg::fixed(value, decimals) or msg::number(value))");
  return ::msg::format(handler, key.nameSpace, key.identifier, arguments...);
}

// The record of the key from handler.getMessage(), owned by the caller; null
// if no acceptable entry exists (no not-found record stands in). The record
// borrows the entry's strings: it must not outlive the entry.
inline std::unique_ptr<Message> getMessage(const MessageHandler& handler, const char* nameSpace,
                                           const char* identifier) {
  return std::unique_ptr<Message>(handler.getMessage(nameSpace, identifier));
}
template <std::size_t Placeholders>
std::unique_ptr<Message> getMessage(const MessageHandler& handler, const Key<Placeholders>& key) {
  return ::msg::getMessage(handler, key.nameSpace, key.identifier);
}

}  // namespace msg

#endif  // MSG_TYPED_H_
