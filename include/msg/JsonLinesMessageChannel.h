// JsonLinesMessageChannel: one JSON object per message, for log shippers.

#ifndef MSG_JSONLINESMESSAGECHANNEL_H_
#define MSG_JSONLINESMESSAGECHANNEL_H_

#include <chrono>
#include <iosfwd>
#include <string>

#include "msg/MessageChannel.h"
#include "msg/export.h"

namespace msg {

// An output channel that writes each message as one line of JSON (JSON
// Lines), to a stream or a file descriptor the application gives:
//
//   {"time":"2026-11-23T04:47:36.123Z","severity":"warning","namespace":"app",
//    "identifier":"diskfull","language":"de","text":"Nur noch 512 MB frei."}
//
// (one line in the output). The fields always come in this order:
//   time        the moment of writing, RFC 3339 in UTC with milliseconds;
//   severity    "info", "warning", "error" or "abort" (another value of
//               SeverityLevel as its decimal number in a string);
//   namespace, identifier   the record's key; null if the record has none;
//   language    the record's language tag ("de-AT"; "" for none);
//   text        the text as Message::getMessage() shows it; null if none.
//
// Escaping: texts are bytes in no declared encoding (the library's own
// German texts are ISO 8859-1, texts from documents UTF-8), yet every line
// must be valid UTF-8 JSON. So a string is written as follows:
//   - '"' and '\' as \" and \\; line feed, carriage return, tab, backspace
//     and form feed as \n, \r, \t, \b, \f; every other byte below 0x20 and
//     DEL (0x7F) as \u00XX;
//   - a well-formed UTF-8 sequence (no overlong form, no surrogate, nothing
//     above U+10FFFF) as it stands;
//   - every other byte B (0x80 to 0xFF) as \u00XX, that is, read as an ISO
//     8859-1 character. ISO 8859-1 text thus arrives intact ("ü" stays
//     "ü"), and no byte can end a line or the JSON early.
//
// The line is made in full and goes out in one write: to a stream with one
// write() followed by flush(), to a file descriptor with write(2) (again
// after EINTR or a partial write). A failing stream reports as streams do
// (its state, or the exceptions the application enabled on it); a failing
// file descriptor throws std::system_error, which passes through
// MessageHandler::writeMessage() to the caller.
//
// Ownership: the channel neither owns nor closes the stream or file
// descriptor; they must stay usable while the channel may write.
//
// Thread safety: onMessage() keeps no state in the channel. With a file
// descriptor, threads may write through one channel, and each line is one
// write(2) call (whole lines up to PIPE_BUF bytes on a pipe; on a file
// opened with O_APPEND). A stream is used by one thread at a time.
class MSG_EXPORT JsonLinesMessageChannel : public MessageChannel {
 public:
  // Writes to `stream`.
  explicit JsonLinesMessageChannel(std::ostream& stream);

  // Writes to the open file descriptor `fileDescriptor`.
  explicit JsonLinesMessageChannel(int fileDescriptor);

  // A copy writes to the same stream or file descriptor.
  JsonLinesMessageChannel(const JsonLinesMessageChannel&) = default;
  JsonLinesMessageChannel& operator=(const JsonLinesMessageChannel&) = delete;
  ~JsonLinesMessageChannel() override;

  // Writes one line for `message`, as described above.
  void onMessage(const Message& message) override;

  // The JSON object of `message` at `time`, without the line feed.
  static std::string toJson(const Message& message, std::chrono::system_clock::time_point time);

  // `text` as the contents of a JSON string (without the quotes), by the
  // escaping rule above.
  static std::string escape(const char* text);

 protected:
  // The time a message is stamped with; the system clock by default.
  // Override to stamp with a fixed time (in tests, say).
  virtual std::chrono::system_clock::time_point now() const;

 private:
  void writeLine(const std::string& line);

  std::ostream* stream;  // not owned; null when writing to a file descriptor
  int fileDescriptor;    // -1 when writing to a stream
};

}  // namespace msg

#endif  // MSG_JSONLINESMESSAGECHANNEL_H_
