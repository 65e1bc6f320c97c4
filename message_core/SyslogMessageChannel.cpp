#include "msg/SyslogMessageChannel.h"

#include <syslog.h>

#include "msg/Message.h"

namespace msg {

static_assert(SyslogMessageChannel::userFacility == LOG_USER, "LOG_USER differs from <syslog.h>");

namespace {

void appendPiece(std::string& text, const char* piece) {
  if (piece != nullptr) {
    text += piece;
  }
}

}  // namespace

SyslogMessageChannel::SyslogMessageChannel(int facility) : facility(facility) {}

SyslogMessageChannel::SyslogMessageChannel(const char* ident, int facility)
    : facility(facility), ident(ident != nullptr ? ident : "") {
  if (!this->ident.empty()) {
    openlog(this->ident.c_str(), LOG_PID, facility);
  }
}

SyslogMessageChannel::~SyslogMessageChannel() {
  if (!ident.empty()) {
    closelog();
  }
}

int SyslogMessageChannel::levelOf(SeverityLevel severity) {
  if (severity <= info) {
    return LOG_INFO;
  }
  if (severity == warning) {
    return LOG_WARNING;
  }
  if (severity == error) {
    return LOG_ERR;
  }
  return LOG_CRIT;
}

void SyslogMessageChannel::onMessage(const Message& message) {
  std::string text;
  appendPiece(text, message.getNamespace());
  text += ':';
  appendPiece(text, message.getIdentifier());
  text += ": ";
  appendPiece(text, message.getMessage());
  send(facility | levelOf(message.getSeverityLevel()), text);
}

void SyslogMessageChannel::send(int priority, const std::string& text) {
  syslog(priority, "%s", text.c_str());
}

}  // namespace msg
