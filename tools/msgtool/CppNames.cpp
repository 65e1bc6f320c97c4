#include "CppNames.h"

#include <set>

namespace msgtool {

namespace {

// Keywords and alternative tokens of C++20, and names that common headers
// take as macros or for themselves.
const std::set<std::string>& unusableNames() {
  static const std::set<std::string> names{
      "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break",
      "case", "catch", "char", "char8_t", "char16_t", "char32_t", "class", "compl", "concept",
      "const", "consteval", "constexpr", "constinit", "const_cast", "continue", "co_await",
      "co_return", "co_yield", "decltype", "default", "delete", "do", "double", "dynamic_cast",
      "else", "enum", "explicit", "export", "extern", "false", "float", "for", "friend", "goto",
      "if", "inline", "int", "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq",
      "nullptr", "operator", "or", "or_eq", "private", "protected", "public", "register",
      "reinterpret_cast", "requires", "return", "short", "signed", "sizeof", "static",
      "static_assert", "static_cast", "struct", "switch", "template", "this", "thread_local",
      "throw", "true", "try", "typedef", "typeid", "typename", "union", "unsigned", "using",
      "virtual", "void", "volatile", "wchar_t", "while", "xor", "xor_eq",
      // namespaces taken by the standard and by this library
      "std", "posix", "msg",
      // macros of the C library and GNU predefined ones
      "NULL", "EOF", "errno", "assert", "stdin", "stdout", "stderr", "offsetof", "setjmp", "va_arg",
      "va_start", "va_end", "linux", "unix", "major", "minor"};
  return names;
}

bool isAsciiAlnum(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

std::string safeCppName(const std::string& original, NameScope scope) {
  std::string name;
  for (const char c : original) {
    const char kept = isAsciiAlnum(static_cast<unsigned char>(c)) ? c : '_';
    if (kept == '_' && !name.empty() && name.back() == '_') {
      continue;  // "__" anywhere is reserved
    }
    name += kept;
  }
  if (name.empty() || (name[0] >= '0' && name[0] <= '9')) {
    name = (scope == NameScope::global ? "ns_" : "k_") + name;
  } else if (name[0] == '_' && (scope == NameScope::global ||
                                (name.size() > 1 && name[1] >= 'A' && name[1] <= 'Z'))) {
    // "_X" is reserved everywhere, "_x" at global scope.
    name = (scope == NameScope::global ? "ns" : "k") + name;
  }
  if (unusableNames().count(name) != 0) {
    name += '_';
  }
  return name;
}

std::map<std::string, std::string> uniqueCppNames(const std::vector<std::string>& originals,
                                                  NameScope scope) {
  std::map<std::string, std::string> names;
  std::set<std::string> taken;
  // Names that needed no change first, so that they keep it.
  for (const std::string& original : originals) {
    const std::string name = safeCppName(original, scope);
    if (name == original) {
      names[original] = name;
      taken.insert(name);
    }
  }
  for (const std::string& original : originals) {
    if (names.count(original) != 0) {
      continue;
    }
    const std::string base = safeCppName(original, scope);
    std::string name = base;
    for (int suffix = 2; taken.count(name) != 0; ++suffix) {
      name = base + (base.back() == '_' ? "" : "_") + std::to_string(suffix);
    }
    names[original] = name;
    taken.insert(name);
  }
  return names;
}

std::string escapeForCpp(const std::string& text, bool asciiOnly) {
  static const char kOctal[] = "01234567";
  std::string out;
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"':
        out += "\\\"";
        continue;
      case '\\':
        out += "\\\\";
        continue;
      case '\n':
        out += "\\n";
        continue;
      case '\t':
        out += "\\t";
        continue;
      default:
        break;
    }
    if (byte < 0x20 || byte == 0x7F || (asciiOnly && byte > 0x7F)) {
      // Octal, not hex: an octal escape ends after three digits, so a digit
      // behind it cannot join it.
      out += '\\';
      out += kOctal[(byte >> 6) & 7];
      out += kOctal[(byte >> 3) & 7];
      out += kOctal[byte & 7];
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace msgtool
