#include "msg/MessageChannel.h"

#include <string>

#include "msg/Message.h"
#include "platform/StandardError.h"

namespace msg {

namespace {

// Appends `piece` unless it is null.
void appendPiece(std::string& line, const char* piece) {
  if (piece != nullptr) {
    line += piece;
  }
}

}  // namespace

MessageChannel::~MessageChannel() = default;

// The line is put together first and handed to std::cerr in one write, so
// that the lines of threads writing at the same time never tear.
void MessageChannel::onMessage(const Message& message) {
  std::string line;
  appendPiece(line, message.getNamespace());
  line += ':';
  appendPiece(line, message.getIdentifier());
  line += ": ";
  appendPiece(line, message.getMessage());
  line += '\n';
  platform::standardError().write(line.data(), static_cast<std::streamsize>(line.size()));
}

}  // namespace msg
