#include "BinaryFiles.h"

#include <fstream>

namespace msgtool {

namespace {

bool startsLikeWideText(const std::string& head) {
  if (head.size() < 2) {
    return false;
  }
  const unsigned char first = static_cast<unsigned char>(head[0]);
  const unsigned char second = static_cast<unsigned char>(head[1]);
  return (first == 0xFF && second == 0xFE) || (first == 0xFE && second == 0xFF) ||
         (first == '<' && second == 0) || (first == 0 && second == '<') ||
         (first == 0 && second == 0);
}

}  // namespace

bool looksBinary(const std::string& head, bool xml) {
  return head.find('\0') != std::string::npos && !(xml && startsLikeWideText(head));
}

std::string headOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string head(kSniffBytes, '\0');
  in.read(&head[0], static_cast<std::streamsize>(head.size()));
  head.resize(in ? head.size() : static_cast<std::size_t>(in.gcount()));
  return in.bad() ? std::string() : head;
}

}  // namespace msgtool
