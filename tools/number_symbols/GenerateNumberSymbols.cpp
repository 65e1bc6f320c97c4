// Writes the table of number symbols that the library formats numbers with:
// for every language that ICU knows and that a msg language tag can hold
// (two letters, optionally a two-letter region), its native digits, decimal
// and group separators, the infinity and NaN symbols, and for plain numbers
// and percentages the texts around a positive and a negative number and the
// grouping (primary and secondary group sizes, minimum grouping digits).
//
//   msg_number_symbols_generator <output.cpp>
//
// Runs at build time only: the library reads the table it writes and never
// loads ICU itself. The texts around a number and the grouping are read from
// what ICU's NumberFormatter writes for a few probe values, so they are what
// ICU does, whatever the pattern behind them looks like. A region gets a row
// of its own only where it differs from its language; at run time de-AT
// falls back to de, and a language without a row to the root.

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/uvernum.h>

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tools/icu_tables/HoldableLocales.h"

namespace {

[[noreturn]] void fail(const icu::Locale& locale, const std::string& what) {
  std::cerr << "msg_number_symbols_generator: " << locale.getName() << ": " << what << "\n";
  std::exit(1);
}

std::string utf8(const icu::UnicodeString& text) {
  std::string out;
  text.toUTF8String(out);
  return out;
}

// The text as a C++ string literal. Bytes beyond ASCII are written as
// three-digit octal escapes, which, unlike hex escapes, cannot swallow a
// following character.
std::string literal(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || byte >= 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", byte);
      out += escape;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

struct Style {
  std::string positivePrefix;
  std::string positiveSuffix;
  std::string negativePrefix;
  std::string negativeSuffix;
  int primary = 0;  // 0: no grouping
  int secondary = 0;
  int minimumGrouping = 1;
};

struct Symbols {
  std::string digits[10];
  std::string decimal;
  std::string group;
  std::string infinity;
  std::string nan;
  Style number;
  Style percent;
};

std::string format(const icu::Locale& locale, const char16_t* skeleton, double value) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::number::LocalizedNumberFormatter formatter =
      icu::number::NumberFormatter::forSkeleton(skeleton, status).locale(locale);
  const icu::UnicodeString text = formatter.formatDouble(value, status).toString(status);
  if (U_FAILURE(status)) {
    fail(locale, std::string("cannot format: ") + u_errorName(status));
  }
  return utf8(text);
}

// The texts before and after `body` in `text`.
void around(const icu::Locale& locale, const std::string& text, const std::string& body,
            std::string& prefix, std::string& suffix) {
  const std::size_t at = text.find(body);
  if (at == std::string::npos || text.find(body, at + 1) != std::string::npos) {
    fail(locale, "probe \"" + text + "\" does not hold \"" + body + "\" once");
  }
  prefix = text.substr(0, at);
  suffix = text.substr(at + body.size());
}

// The sizes of the digit groups of `text`, from the left, as separated by
// `group`.
std::vector<int> groupSizes(const Symbols& symbols, const std::string& text) {
  std::vector<int> sizes(1, 0);
  std::size_t at = 0;
  while (at < text.size()) {
    if (!symbols.group.empty() && text.compare(at, symbols.group.size(), symbols.group) == 0) {
      sizes.push_back(0);
      at += symbols.group.size();
      continue;
    }
    bool digit = false;
    for (const std::string& d : symbols.digits) {
      if (text.compare(at, d.size(), d) == 0) {
        ++sizes.back();
        at += d.size();
        digit = true;
        break;
      }
    }
    if (!digit) {
      ++at;  // part of a prefix or suffix
    }
  }
  return sizes;
}

Style readStyle(const icu::Locale& locale, const Symbols& symbols, const char16_t* skeleton) {
  Style style;
  around(locale, format(locale, skeleton, 1), symbols.digits[1], style.positivePrefix,
         style.positiveSuffix);
  around(locale, format(locale, skeleton, -1), symbols.digits[1], style.negativePrefix,
         style.negativeSuffix);
  // Only the digits count: a suffix may begin with the group separator
  // itself (Belarusian "1 234 %", both spaces U+00A0).
  const auto digitsOf = [&](double value) {
    const std::string text = format(locale, skeleton, value);
    const std::size_t outside = style.positivePrefix.size() + style.positiveSuffix.size();
    if (text.size() < outside ||
        text.compare(0, style.positivePrefix.size(), style.positivePrefix) != 0 ||
        text.compare(text.size() - style.positiveSuffix.size(), std::string::npos,
                     style.positiveSuffix) != 0) {
      fail(locale, "probe \"" + text + "\" has other texts around it than 1");
    }
    return text.substr(style.positivePrefix.size(), text.size() - outside);
  };
  const std::vector<int> sizes = groupSizes(symbols, digitsOf(1234567890123.0));
  if (sizes.size() < 2) {
    return style;  // never grouped
  }
  style.primary = sizes[sizes.size() - 1];
  style.secondary = sizes.size() > 2 ? sizes[sizes.size() - 2] : style.primary;
  style.minimumGrouping = 0;
  for (int k = 1; k <= 4 && style.minimumGrouping == 0; ++k) {
    if (groupSizes(symbols, digitsOf(std::pow(10.0, style.primary + k - 1))).size() > 1) {
      style.minimumGrouping = k;
    }
  }
  if (style.minimumGrouping == 0) {
    fail(locale, "no minimum grouping found");
  }
  return style;
}

Symbols readSymbols(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DecimalFormatSymbols dfs(locale, status);
  if (U_FAILURE(status)) {
    fail(locale, std::string("no symbols: ") + u_errorName(status));
  }
  Symbols symbols;
  symbols.digits[0] = utf8(dfs.getSymbol(icu::DecimalFormatSymbols::kZeroDigitSymbol));
  for (int d = 1; d <= 9; ++d) {
    const auto which = static_cast<icu::DecimalFormatSymbols::ENumberFormatSymbol>(
        icu::DecimalFormatSymbols::kOneDigitSymbol + d - 1);
    symbols.digits[d] = utf8(dfs.getSymbol(which));
  }
  symbols.decimal = utf8(dfs.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol));
  symbols.group = utf8(dfs.getSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol));
  symbols.infinity = utf8(dfs.getSymbol(icu::DecimalFormatSymbols::kInfinitySymbol));
  symbols.nan = utf8(dfs.getSymbol(icu::DecimalFormatSymbols::kNaNSymbol));
  symbols.number = readStyle(locale, symbols, u".###");
  symbols.percent = readStyle(locale, symbols, u"percent .###");
  return symbols;
}

// Every text of the table once, each ending with a NUL; rows name a text
// by its offset, so the table holds no pointer the loader must relocate.
class TextPool {
 public:
  // The offset of `text`, added if new; with a comment of the text itself.
  std::string offsetOf(const std::string& text) {
    auto found = offsets.find(text);
    if (found == offsets.end()) {
      found = offsets.emplace(text, pool.size()).first;
      pool += text;
      pool += '\0';
      if (pool.size() > 0xffff) {
        std::cerr << "msg_number_symbols_generator: the texts exceed 64 KiB\n";
        std::exit(1);
      }
    }
    return std::to_string(found->second);
  }

  // The pool as the initialiser of a char array, one text a line.
  std::string initialiser() const {
    std::string out;
    for (std::size_t begin = 0; begin < pool.size();) {
      const std::size_t end = pool.find('\0', begin);
      // The array's own final NUL ends the last text.
      out += "    " + literal(pool.substr(begin, end - begin)) +
             (end + 1 < pool.size() ? " \"\\0\"" : "") + "\n";
      begin = end + 1;
    }
    return out;
  }

 private:
  std::string pool;
  std::map<std::string, std::size_t> offsets;
};

std::string styleText(const Style& style, TextPool& texts) {
  return "{" + texts.offsetOf(style.positivePrefix) + ", " + texts.offsetOf(style.positiveSuffix) +
         ", " + texts.offsetOf(style.negativePrefix) + ", " + texts.offsetOf(style.negativeSuffix) +
         ", " + std::to_string(style.primary) + ", " + std::to_string(style.secondary) + ", " +
         std::to_string(style.minimumGrouping) + "}";
}

// The row's initialiser behind its tag; equal texts mean equal symbols.
std::string rowText(const Symbols& symbols, TextPool& texts) {
  std::string text = "{{";
  for (const std::string& digit : symbols.digits) {
    text += texts.offsetOf(digit) + (&digit == &symbols.digits[9] ? "}, " : ", ");
  }
  return text + texts.offsetOf(symbols.decimal) + ", " + texts.offsetOf(symbols.group) + ", " +
         texts.offsetOf(symbols.infinity) + ", " + texts.offsetOf(symbols.nan) + ",\n     " +
         styleText(symbols.number, texts) + ",\n     " + styleText(symbols.percent, texts) + "}";
}

// The tag packed as msg::Language packs it, as one number whose order is
// that of the packed bytes.
std::uint32_t packedTag(const std::string& tag) {
  unsigned char bytes[4] = {0, 0, 0, 0};
  bytes[0] = static_cast<unsigned char>(tag[0]);
  bytes[1] = static_cast<unsigned char>(tag[1]);
  if (tag.size() == 5) {
    bytes[2] = static_cast<unsigned char>(tag[3]);
    bytes[3] = static_cast<unsigned char>(tag[4]);
  }
  return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
         (std::uint32_t{bytes[2]} << 8) | bytes[3];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: msg_number_symbols_generator <output.cpp>\n";
    return 2;
  }
  TextPool texts;
  const std::string root = rowText(readSymbols(icu::Locale::getRoot()), texts);

  // Languages first, then regions compared with their language. Rows are
  // kept in the order of their packed tags, which the library's binary
  // search expects.
  std::map<std::string, std::string> languages;
  std::map<std::uint32_t, std::pair<std::string, std::string>> rows;
  for (const icu::Locale& locale : msg_tables::holdableLocales()) {
    const bool hasRegion = locale.getCountry()[0] != '\0';
    const std::string text = rowText(readSymbols(locale), texts);
    std::string tag = locale.getLanguage();
    if (!hasRegion) {
      languages.emplace(tag, text);
      rows.emplace(packedTag(tag), std::make_pair(tag, text));
      continue;
    }
    const auto language = languages.find(tag);
    if (text != (language != languages.end() ? language->second : root)) {
      tag += std::string("-") + locale.getCountry();
      rows.emplace(packedTag(tag), std::make_pair(tag, text));
    }
  }

  std::ofstream out(argv[1], std::ios::trunc);
  out << "// The number symbols of ICU " U_ICU_VERSION " for every language a msg tag can hold.\n"
      << "// Written at build time by msg_number_symbols_generator; do not edit.\n\n"
      << "#include \"message_core/NumberSymbolData.h\"\n\nnamespace msg {\n\n"
      << "const char kNumberSymbolTexts[] =\n"
      << texts.initialiser() << "    ;\n\n"
      << "const NumberSymbolRow kNumberRootRow = " << root << ";\n\n"
      << "const std::uint32_t kNumberSymbolTags[] = {\n";
  for (const auto& row : rows) {
    out << "    0x" << std::hex << row.first << std::dec << "u,  // " << row.second.first << "\n";
  }
  out << "};\n\nconst NumberSymbolRow kNumberSymbolRows[] = {\n";
  for (const auto& row : rows) {
    out << "    // " << row.second.first << "\n    " << row.second.second << ",\n";
  }
  out << "};\nconst std::size_t kNumberSymbolRowCount = " << rows.size() << ";\n\n"
      << "}  // namespace msg\n";
  out.close();
  if (!out) {
    std::cerr << "msg_number_symbols_generator: cannot write " << argv[1] << "\n";
    return 1;
  }
  return 0;
}
