// The formatting channel's Unicode model: display columns, break points of
// the line breaking rules, whole grapheme clusters; and the choice between
// it and the byte model.

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "msg/FormattingMessageChannel.h"
#include "msg/Message.h"

namespace msg {
namespace {

using TextModel = FormattingMessageChannel::TextModel;

class RecordingChannel : public FormattingMessageChannel {
 public:
  void onMessageLine(bool firstLine, bool lastLine, const char* line) override {
    EXPECT_EQ(firstLine, lines.empty()) << line;
    EXPECT_FALSE(sawLast) << "a line after the last: " << line;
    sawLast = lastLine;
    lines.emplace_back(line);
  }
  std::vector<std::string> lines;
  bool sawLast = false;
};

std::vector<std::string> layOut(const std::string& text, int width, TextModel model,
                                int leftMargin = 0, int indent = 0) {
  RecordingChannel channel;
  channel.setTextHeaderFormat("&t");
  channel.setRightMargin(width - 1);
  channel.setLeftMargin(leftMargin);
  channel.setIndent(indent);
  channel.setTextModel(model);
  channel.onMessage(Message("ns", "id", error, "en", text.c_str()));
  EXPECT_TRUE(channel.sawLast) << text;
  return channel.lines;
}

std::string utf8Of(UChar32 c) {
  char bytes[4];
  int32_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, c);
  return std::string(bytes, static_cast<std::size_t>(length));
}

bool validUtf8(const std::string& text) {
  int32_t at = 0;
  const auto length = static_cast<int32_t>(text.size());
  while (at < length) {
    UChar32 c = 0;
    U8_NEXT(text.data(), at, length, c);
    if (c < 0) {
      return false;
    }
  }
  return true;
}

// Byte offsets of the grapheme cluster boundaries of `text`, by ICU.
std::set<std::size_t> clusterBoundaries(const std::string& text) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> clusters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  UText utf8 = UTEXT_INITIALIZER;
  utext_openUTF8(&utf8, text.data(), static_cast<int64_t>(text.size()), &status);
  clusters->setText(&utf8, status);
  utext_close(&utf8);
  EXPECT_TRUE(U_SUCCESS(status));
  std::set<std::size_t> boundaries;
  for (int32_t at = clusters->first(); at != icu::BreakIterator::DONE; at = clusters->next()) {
    boundaries.insert(static_cast<std::size_t>(at));
  }
  return boundaries;
}

// What a terminal gives a cluster: its widest code point, where East Asian
// Wide and Fullwidth take 2 and marks, format characters and the vowels and
// finals of conjoining Hangul 0; a flag takes 2.
int columnsOf(const std::string& cluster) {
  int widest = 0;
  int flags = 0;
  int32_t at = 0;
  while (at < static_cast<int32_t>(cluster.size())) {
    UChar32 c = 0;
    U8_NEXT_UNSAFE(cluster.data(), at, c);
    const int8_t type = u_charType(c);
    const int hangul = u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE);
    const int eaw = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    int columns = 1;
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK ||
        type == U_COMBINING_SPACING_MARK || type == U_FORMAT_CHAR || hangul == U_HST_VOWEL_JAMO ||
        hangul == U_HST_TRAILING_JAMO) {
      columns = 0;
    } else if (eaw == U_EA_WIDE || eaw == U_EA_FULLWIDTH) {
      columns = 2;
    }
    widest = std::max(widest, columns);
    flags += u_hasBinaryProperty(c, UCHAR_REGIONAL_INDICATOR) ? 1 : 0;
  }
  return flags == 2 ? 2 : widest;
}

// Checks the lines of `text` laid out `width` columns wide (first line from
// column `first`, the others from `left`): every line valid UTF-8 and
// within the width unless it holds a single cluster; margins of blanks;
// breaks only at cluster `boundaries`; and the lines, without their margins,
// give the text back, where only blanks and a line break may vanish between
// two lines.
void checkLines(const std::string& text, const std::vector<std::string>& lines, int width,
                int first, int left, const std::set<std::size_t>& boundaries) {
  SCOPED_TRACE("width " + std::to_string(width) + ", text \"" + text + "\"");
  ASSERT_FALSE(lines.empty());
  std::set<std::size_t> positions = {0};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string& line = lines[i];
    SCOPED_TRACE("line " + std::to_string(i) + " \"" + line + "\"");
    ASSERT_TRUE(validUtf8(line));
    const std::size_t fill = static_cast<std::size_t>(i == 0 ? first : left);
    ASSERT_GE(line.size(), fill);
    ASSERT_EQ(line.find_first_not_of(' ') < fill, false) << "margin fill missing";
    const std::string content = line.substr(fill);

    // Columns of the line, cluster by cluster.
    const std::set<std::size_t> own = clusterBoundaries(content);
    int columns = static_cast<int>(fill);
    for (auto b = own.begin(); std::next(b) != own.end(); ++b) {
      columns += columnsOf(content.substr(*b, *std::next(b) - *b));
    }
    if (columns > width) {
      EXPECT_EQ(own.size(), 2u) << "wider than " << width << " and more than one cluster";
    }

    std::set<std::size_t> next;
    for (std::size_t at : positions) {
      std::size_t candidate = at;
      while (true) {
        if (text.compare(candidate, content.size(), content) == 0 &&
            boundaries.count(candidate) != 0 && boundaries.count(candidate + content.size()) != 0) {
          next.insert(candidate + content.size());
        }
        if (i == 0 || candidate >= text.size()) {
          break;
        }
        if (text.compare(candidate, 2, "\r\n") == 0) {
          next.insert(candidate + 2 + content.size());  // checked below by matching again
          candidate += 2;
          if (text.compare(candidate, content.size(), content) != 0) {
            next.erase(candidate + content.size());
          }
          break;
        }
        if (text[candidate] == '\n' || text[candidate] == '\r') {
          ++candidate;
          if (text.compare(candidate, content.size(), content) == 0) {
            next.insert(candidate + content.size());
          }
          break;
        }
        if (text[candidate] != ' ') {
          break;
        }
        ++candidate;
      }
    }
    ASSERT_FALSE(next.empty()) << "line does not continue the text at a cluster boundary";
    positions.swap(next);
  }
  // Only blanks may stay behind at the end.
  bool reachedEnd = false;
  for (std::size_t at : positions) {
    reachedEnd = reachedEnd || text.find_first_not_of(' ', at) == std::string::npos;
  }
  EXPECT_TRUE(reachedEnd) << "text lost at the end";
}

// Every case of GraphemeBreakTest.txt: its text and the byte offsets of its
// cluster boundaries ("÷").
struct GraphemeCase {
  std::string text;
  std::set<std::size_t> boundaries;
};

std::vector<GraphemeCase> readGraphemeBreakTest() {
  std::ifstream file("/usr/share/unicode/auxiliary/GraphemeBreakTest.txt");
  std::vector<GraphemeCase> cases;
  std::string row;
  while (std::getline(file, row)) {
    row = row.substr(0, row.find('#'));
    std::istringstream fields(row);
    GraphemeCase current;
    std::string field;
    while (fields >> field) {
      if (field == "\xC3\xB7") {  // ÷
        current.boundaries.insert(current.text.size());
      } else if (field != "\xC3\x97") {  // ×
        current.text += utf8Of(static_cast<UChar32>(std::stoul(field, nullptr, 16)));
      }
    }
    if (!current.text.empty()) {
      cases.push_back(current);
    }
  }
  return cases;
}

TEST(FormattingChannelUnicodeTest, GraphemeBreakTestCasesKeepTheirClusters) {
  const std::vector<GraphemeCase> cases = readGraphemeBreakTest();
  ASSERT_EQ(cases.size(), 602u)
      << "needs Unicode 15's GraphemeBreakTest.txt (Debian package unicode-data)";
  // Narrow lines break inside every case wherever they may.
  for (const GraphemeCase& c : cases) {
    for (int width = 1; width <= 4; ++width) {
      checkLines(c.text, layOut(c.text, width, TextModel::kUnicode), width, 0, 0, c.boundaries);
    }
  }
  // All of them as one text, between blanks, at widths 10 to 80.
  std::string all;
  for (const GraphemeCase& c : cases) {
    all += c.text + " ";
  }
  const std::set<std::size_t> boundaries = clusterBoundaries(all);
  for (int width = 10; width <= 80; width += 7) {
    checkLines(all, layOut(all, width, TextModel::kUnicode, 3, -1), width, 2, 3, boundaries);
  }
}

TEST(FormattingChannelUnicodeTest, MixedScriptsFitTheirColumns) {
  const std::string texts[] = {
      // Japanese, Chinese, Korean, fullwidth Latin; full stops never open a line
      "\xE3\x81\x93\xE3\x82\x8C\xE3\x81\xAF\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE"
      "\xE6\x96\x87\xE7\xAB\xA0\xE3\x81\xA7\xE3\x81\x99\xE3\x80\x82\xE4\xB8\xAD\xE6\x96\x87"
      "\xE6\xB5\x8B\xE8\xAF\x95\xE3\x80\x82 \xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4 "
      "\xED\x85\x8C\xEC\x8A\xA4\xED\x8A\xB8\xEC\x9E\x85\xEB\x8B\x88\xEB\x8B\xA4."
      " \xEF\xBC\xA6\xEF\xBC\xB5\xEF\xBC\xAC\xEF\xBC\xAC"
      "\xEF\xBC\xB7\xEF\xBC\xA9\xEF\xBC\xA4\xEF\xBC\xB4\xEF\xBC\xA8",
      // Cyrillic with a line feed
      "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB \xD0\xBD\xD0\xB5 \xD0\xBD\xD0\xB0\xD0\xB9\xD0\xB4"
      "\xD0\xB5\xD0\xBD: /srv/archive/\xD0\xB4\xD0\xB0\xD0\xBD\xD0\xBD\xD1\x8B\xD0\xB5\n"
      "\xD0\x9F\xD1\x80\xD0\xBE\xD0\xB2\xD0\xB5\xD1\x80\xD1\x8C\xD1\x82\xD0\xB5 \xD0\xBF"
      "\xD1\x83\xD1\x82\xD1\x8C \xD0\xB8 \xD0\xBF\xD0\xBE\xD0\xB2\xD1\x82\xD0\xBE\xD1\x80"
      "\xD0\xB8\xD1\x82\xD0\xB5.",
      // Arabic
      "\xD9\x84\xD9\x85 \xD9\x8A\xD8\xAA\xD9\x85 \xD8\xA7\xD9\x84\xD8\xB9\xD8\xAB\xD9\x88"
      "\xD8\xB1 \xD8\xB9\xD9\x84\xD9\x89 \xD8\xA7\xD9\x84\xD9\x85\xD9\x84\xD9\x81 "
      "\xD9\x81\xD9\x8A \xD8\xA7\xD9\x84\xD9\x85\xD8\xAC\xD9\x84\xD8\xAF.",
      // Emoji: a ZWJ family, a skin tone, flags, a keycap
      "Familie \xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 "
      "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD "
      "\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA\xF0\x9F\x87\xAF\xF0\x9F\x87\xB5\xF0\x9F\x87\xAB"
      "\xF0\x9F\x87\xB7 1\xEF\xB8\x8F\xE2\x83\xA3 fertig",
      // Combining marks, stacked; a long unbreakable run
      "Cafe\xCC\x81 na\xCC\x88\xCC\x83ve Z\xCD\xA7\xCD\x91\xCC\x93"
      "a\xCC\xAB\xCC\xA5l"
      "\xCC\x9Dgo\xCC\x9F "
      "\xE2\x80\x94\xE2\x80\x94"
      "abcdefghijklmnopqrstuvwxyz\xC3\xA9"
      "abcdefghijklmnopqrstuvwxyz\xC3\xA9"
      "abcdefghijklmnopqrstuvwxyz",
  };
  for (const std::string& text : texts) {
    const std::set<std::size_t> boundaries = clusterBoundaries(text);
    for (int width = 10; width <= 80; ++width) {
      // By default these texts choose the Unicode model themselves.
      checkLines(text, layOut(text, width, TextModel::kChosenByText), width, 0, 0, boundaries);
      checkLines(text, layOut(text, width, TextModel::kChosenByText, 4, 2), width, 6, 4,
                 boundaries);
    }
  }
}

const char kJapanese[] =  // これは日本語の文章です。二行目。
    "\xE3\x81\x93\xE3\x82\x8C\xE3\x81\xAF\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE"
    "\xE6\x96\x87\xE7\xAB\xA0\xE3\x81\xA7\xE3\x81\x99\xE3\x80\x82\xE4\xBA\x8C\xE8\xA1\x8C"
    "\xE7\x9B\xAE\xE3\x80\x82";
const char kFullStop[] = "\xE3\x80\x82";

TEST(FormattingChannelUnicodeTest, CountsColumnsAndBreaksWhereTheRulesAllow) {
  // Fourteen ideographs, kana and full stops take 28 columns, at most five
  // on a line of ten: a full stop stays with the character before it.
  const std::vector<std::string> japanese = layOut(kJapanese, 10, TextModel::kChosenByText);
  ASSERT_EQ(japanese.size(), 4u);
  EXPECT_EQ(japanese[0], "\xE3\x81\x93\xE3\x82\x8C\xE3\x81\xAF\xE6\x97\xA5\xE6\x9C\xAC");
  EXPECT_EQ(japanese[1], "\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87\xE7\xAB\xA0\xE3\x81\xA7");
  EXPECT_EQ(japanese[2], "\xE3\x81\x99\xE3\x80\x82\xE4\xBA\x8C\xE8\xA1\x8C");
  EXPECT_EQ(japanese[3], "\xE7\x9B\xAE\xE3\x80\x82");
  // From four columns on, a character and its full stop always fit a line.
  for (int width = 4; width <= 24; ++width) {
    for (const std::string& line : layOut(kJapanese, width, TextModel::kChosenByText)) {
      EXPECT_NE(line.rfind(kFullStop, 0), 0u) << "a line opens with a full stop at " << width;
    }
  }

  // Cyrillic: a letter is one column of two bytes, and no line opens with
  // the blank it broke at.
  const std::string russian =  // "Файл не найден: проверьте путь"
      "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB \xD0\xBD\xD0\xB5 \xD0\xBD\xD0\xB0\xD0\xB9\xD0\xB4\xD0"
      "\xB5\xD0\xBD: \xD0\xBF\xD1\x80\xD0\xBE\xD0\xB2\xD0\xB5\xD1\x80\xD1\x8C\xD1\x82\xD0\xB5 "
      "\xD0\xBF\xD1\x83\xD1\x82\xD1\x8C";
  const std::vector<std::string> expected = {
      "\xD0\xA4\xD0\xB0\xD0\xB9\xD0\xBB \xD0\xBD\xD0\xB5 \xD0\xBD\xD0\xB0\xD0\xB9\xD0\xB4\xD0"
      "\xB5\xD0\xBD:",
      "\xD0\xBF\xD1\x80\xD0\xBE\xD0\xB2\xD0\xB5\xD1\x80\xD1\x8C\xD1\x82\xD0\xB5 \xD0\xBF\xD1"
      "\x83\xD1\x82\xD1\x8C"};
  EXPECT_EQ(layOut(russian, 16, TextModel::kChosenByText), expected);

  // Margins and indent count columns; the first line holds 3 + 2 x 2.
  const std::vector<std::string> indented =
      layOut("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 7, TextModel::kUnicode, 2, 1);
  const std::vector<std::string> indentedExpected = {"   \xE6\x97\xA5\xE6\x9C\xAC",
                                                     "  \xE8\xAA\x9E"};
  EXPECT_EQ(indented, indentedExpected);

  // A cluster wider than the line stands on a line of its own.
  const std::vector<std::string> alone = layOut("\xE6\x97\xA5\xE6\x9C\xAC", 1, TextModel::kUnicode);
  const std::vector<std::string> aloneExpected = {"\xE6\x97\xA5", "\xE6\x9C\xAC"};
  EXPECT_EQ(alone, aloneExpected);
}

TEST(FormattingChannelUnicodeTest, ALineFeedEndsTheLineInTheUnicodeModelOnly) {
  const std::string twoLines = "\xD0\xB4\xD0\xB0\n\xD0\xBD\xD0\xB5\xD1\x82\n\nok";  // да, нет
  const std::vector<std::string> unicode = {"\xD0\xB4\xD0\xB0", "\xD0\xBD\xD0\xB5\xD1\x82", "",
                                            "ok"};
  EXPECT_EQ(layOut(twoLines, 40, TextModel::kChosenByText), unicode);
  // The byte model keeps the line feed as a letter.
  const std::vector<std::string> bytes = {twoLines};
  EXPECT_EQ(layOut(twoLines, 40, TextModel::kBytes), bytes);
  // ASCII chooses the byte model; forced, it takes the Unicode one.
  const std::vector<std::string> asciiBytes = {"yes\nno"};
  const std::vector<std::string> asciiUnicode = {"yes", "no"};
  EXPECT_EQ(layOut("yes\nno", 40, TextModel::kChosenByText), asciiBytes);
  EXPECT_EQ(layOut("yes\nno", 40, TextModel::kUnicode), asciiUnicode);
}

TEST(FormattingChannelUnicodeTest, TheByteModelCountsBytesWhenForcedOrForLatin1) {
  // Forced bytes: 16 bytes of Cyrillic, eight letters, fill a line of 16.
  const std::string cyrillic = "\xD0\xB0\xD0\xB1\xD0\xB2\xD0\xB3 \xD0\xB4\xD0\xB5\xD0\xB6";
  const std::vector<std::string> forced = {"\xD0\xB0\xD0\xB1\xD0\xB2\xD0\xB3",
                                           "\xD0\xB4\xD0\xB5\xD0\xB6"};
  EXPECT_EQ(layOut(cyrillic, 10, TextModel::kBytes), forced);
  EXPECT_EQ(layOut(cyrillic, 10, TextModel::kChosenByText), std::vector<std::string>{cyrillic});

  // Latin-1 is not UTF-8: byte rules, whichever model is asked for, and not
  // a byte lost.
  const std::string latin1 =
      "Gr\xF6\xDF"
      "e \xFC"
      "ber alles";
  const std::vector<std::string> latin1Lines = {
      "Gr\xF6\xDF"
      "e",
      "\xFC"
      "ber alles"};
  for (TextModel model : {TextModel::kChosenByText, TextModel::kUnicode, TextModel::kBytes}) {
    EXPECT_EQ(layOut(latin1, 10, model), latin1Lines);
  }
}

TEST(FormattingChannelUnicodeTest, HeaderAndCopyKeepTheModel) {
  RecordingChannel channel;
  EXPECT_EQ(channel.getTextModel(), TextModel::kChosenByText);
  channel.setTextModel(TextModel::kBytes);
  RecordingChannel copy(channel);
  EXPECT_EQ(copy.getTextModel(), TextModel::kBytes);

  // A namespace beyond ASCII that the format does not show leaves ASCII
  // output: the byte model, where a line feed is a letter.
  RecordingChannel hidden;
  hidden.setTextHeaderFormat("&t");
  hidden.onMessage(Message("\xC3\xA4pp", "x", error, "en", "yes\nno"));
  EXPECT_EQ(hidden.lines, std::vector<std::string>{"yes\nno"});

  // The default header wraps with the text, counted in columns; the blank
  // behind the text stays where it fits.
  RecordingChannel header;
  header.setRightMargin(11);
  header.onMessage(Message("app", "x", error, "ja", "\xE6\x97\xA5\xE6\x9C\xAC"));
  const std::vector<std::string> lines = {"app:x: \xE6\x97\xA5\xE6\x9C\xAC "};
  EXPECT_EQ(header.lines, lines);
}

}  // namespace
}  // namespace msg
