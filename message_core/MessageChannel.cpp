#include "msg/MessageChannel.h"

#include <iostream>

#include "msg/Message.h"

namespace msg {

namespace {

// Writes `piece` unless it is null.
void writePiece(const char* piece) {
  if (piece != nullptr) {
    std::cerr << piece;
  }
}

}  // namespace

MessageChannel::~MessageChannel() = default;

void MessageChannel::onMessage(const Message& message) {
  writePiece(message.getNamespace());
  std::cerr << ':';
  writePiece(message.getIdentifier());
  std::cerr << ": ";
  writePiece(message.getMessage());
  std::cerr << '\n';
}

}  // namespace msg
