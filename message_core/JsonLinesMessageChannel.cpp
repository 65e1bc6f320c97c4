#include "msg/JsonLinesMessageChannel.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <ostream>
#include <system_error>

#include "message_core/DecimalText.h"
#include "message_core/SeverityWords.h"
#include "message_core/Utf8.h"
#include "msg/Message.h"

namespace msg {

// The escaper is our own, not nlohmann-json's dump(): for a byte that is not
// UTF-8, dump() either throws or puts U+FFFD in its place, and both lose the
// text of ISO 8859-1 catalogues. Six string fields need no more than this.

namespace {

void appendUnicodeEscape(std::string& out, unsigned char byte) {
  char escaped[8];
  std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned int>(byte));
  out += escaped;
}

void appendString(std::string& out, const char* name, const char* value) {
  out += '"';
  out += name;
  out += "\":";
  if (value == nullptr) {
    out += "null";
    return;
  }
  out += '"';
  out += JsonLinesMessageChannel::escape(value);
  out += '"';
}

// "2026-11-23T04:47:36.123Z"
std::string rfc3339(std::chrono::system_clock::time_point time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time - seconds).count();
  const std::time_t whole = std::chrono::system_clock::to_time_t(seconds);
  std::tm parts{};
  gmtime_r(&whole, &parts);
  char text[96];  // room for any int in every field
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                static_cast<int>(milliseconds));
  return text;
}

}  // namespace

JsonLinesMessageChannel::JsonLinesMessageChannel(std::ostream& stream)
    : stream(&stream), fileDescriptor(-1) {}

JsonLinesMessageChannel::JsonLinesMessageChannel(int fileDescriptor)
    : stream(nullptr), fileDescriptor(fileDescriptor) {}

JsonLinesMessageChannel::~JsonLinesMessageChannel() = default;

std::chrono::system_clock::time_point JsonLinesMessageChannel::now() const {
  return std::chrono::system_clock::now();
}

std::string JsonLinesMessageChannel::escape(const char* text) {
  std::string out;
  if (text == nullptr) {
    return out;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  std::size_t size = std::char_traits<char>::length(text);
  out.reserve(size + size / 8);
  std::size_t i = 0;
  while (i < size) {
    const unsigned char byte = bytes[i];
    if (byte >= 0x80) {
      const std::size_t length = utf8SequenceLength(bytes + i, size - i);
      if (length == 0) {
        appendUnicodeEscape(out, byte);  // read as ISO 8859-1
        ++i;
      } else {
        out.append(text + i, length);
        i += length;
      }
      continue;
    }
    switch (byte) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      default:
        if (byte < 0x20 || byte == 0x7F) {
          appendUnicodeEscape(out, byte);
        } else {
          out += static_cast<char>(byte);
        }
    }
    ++i;
  }
  return out;
}

std::string JsonLinesMessageChannel::toJson(const Message& message,
                                            std::chrono::system_clock::time_point time) {
  std::string line = "{\"time\":\"" + rfc3339(time) + "\",\"severity\":\"" +
                     severityText(message.getSeverityLevel()) + "\",";
  appendString(line, "namespace", message.getNamespace());
  line += ',';
  appendString(line, "identifier", message.getIdentifier());
  line += ',';
  appendString(line, "language", message.getLanguage().toString().c_str());
  line += ',';
  appendString(line, "text", message.getMessage());
  line += '}';
  return line;
}

void JsonLinesMessageChannel::onMessage(const Message& message) {
  std::string line = toJson(message, now());
  line += '\n';
  writeLine(line);
}

void JsonLinesMessageChannel::writeLine(const std::string& line) {
  if (stream != nullptr) {
    stream->write(line.data(), static_cast<std::streamsize>(line.size()));
    stream->flush();
    return;
  }
  const char* rest = line.data();
  std::size_t left = line.size();
  while (left > 0) {
    const ssize_t written = ::write(fileDescriptor, rest, left);
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw std::system_error(errno, std::generic_category(),
                              "JSON Lines channel: cannot write to file descriptor " +
                                  decimalText(static_cast<long long>(fileDescriptor)));
    }
    rest += written;
    left -= static_cast<std::size_t>(written);
  }
}

}  // namespace msg
