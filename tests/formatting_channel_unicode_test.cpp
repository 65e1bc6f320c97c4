// The formatting channel's Unicode model: display columns, break points of
// the line breaking rules, whole grapheme clusters; and the choice between
// it and the byte model.

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
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

    // The content starts where the text was followed to; on later lines
    // also behind the blanks a break dropped, or behind a line break.
    std::set<std::size_t> next;
    const auto match = [&](std::size_t from) {
      const std::size_t to = from + content.size();
      if (text.compare(from, content.size(), content) == 0 && boundaries.count(from) != 0 &&
          boundaries.count(to) != 0) {
        next.insert(to);
      }
    };
    for (std::size_t from : positions) {
      match(from);
      if (i == 0) {
        continue;
      }
      while (from < text.size() && text[from] == ' ') {
        match(++from);
      }
      if (text.compare(from, 2, "\r\n") == 0) {
        match(from + 2);
      } else if (from < text.size() && (text[from] == '\n' || text[from] == '\r')) {
        match(from + 1);
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
      if (field == "÷") {
        current.boundaries.insert(current.text.size());
      } else if (field != "×") {
        icu::UnicodeString(static_cast<UChar32>(std::stoul(field, nullptr, 16)))
            .toUTF8String(current.text);
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
      "これは日本語の文章です。中文测试。 한국어 테스트입니다. ＦＵＬＬＷＩＤＴＨ",
      "Файл не найден: /srv/archive/данные\nПроверьте путь и повторите.",
      "لم يتم العثور على الملف في المجلد.",
      // Emoji: a ZWJ family, a skin tone, flags, a keycap
      "Familie \xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7 "
      "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD "
      "\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA\xF0\x9F\x87\xAF\xF0\x9F\x87\xB5\xF0\x9F\x87\xAB"
      "\xF0\x9F\x87\xB7 1\xEF\xB8\x8F\xE2\x83\xA3 fertig",
      // Combining marks, stacked; a long unbreakable run
      "Cafe\xCC\x81 na\xCC\x88\xCC\x83ve Z\xCD\xA7\xCD\x91\xCC\x93"
      "a\xCC\xAB\xCC\xA5l"
      "\xCC\x9Dgo\xCC\x9F "
      "——abcdefghijklmnopqrstuvwxyzéabcdefghijklmnopqrstuvwxyzéabcdefghijklmnopqrstuvwxyz",
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

using Lines = std::vector<std::string>;

TEST(FormattingChannelUnicodeTest, CountsColumnsAndBreaksWhereTheRulesAllow) {
  // Fourteen ideographs, kana and full stops take 28 columns, at most five
  // on a line of ten: a full stop stays with the character before it.
  const char japanese[] = "これは日本語の文章です。二行目。";
  EXPECT_EQ(layOut(japanese, 10, TextModel::kChosenByText),
            (Lines{"これは日本", "語の文章で", "す。二行", "目。"}));
  // From four columns on, a character and its full stop always fit a line.
  for (int width = 4; width <= 24; ++width) {
    for (const std::string& line : layOut(japanese, width, TextModel::kChosenByText)) {
      EXPECT_NE(line.rfind("。", 0), 0u) << "a line opens with a full stop at " << width;
    }
  }
  // Cyrillic: a letter is one column of two bytes, and no line opens with
  // the blank it broke at.
  EXPECT_EQ(layOut("Файл не найден: проверьте путь", 16, TextModel::kChosenByText),
            (Lines{"Файл не найден:", "проверьте путь"}));
  // Margins and indent count columns; the first line holds 3 + 2 x 2.
  EXPECT_EQ(layOut("日本語", 7, TextModel::kUnicode, 2, 1), (Lines{"   日本", "  語"}));
  // A cluster wider than the line stands on a line of its own.
  EXPECT_EQ(layOut("日本", 1, TextModel::kUnicode), (Lines{"日", "本"}));
}

TEST(FormattingChannelUnicodeTest, ALineFeedEndsTheLineInTheUnicodeModelOnly) {
  const std::string twoLines = "да\nнет\n\nok";
  EXPECT_EQ(layOut(twoLines, 40, TextModel::kChosenByText), (Lines{"да", "нет", "", "ok"}));
  // The byte model keeps the line feed as a letter.
  EXPECT_EQ(layOut(twoLines, 40, TextModel::kBytes), Lines{twoLines});
  // ASCII chooses the byte model; forced, it takes the Unicode one.
  EXPECT_EQ(layOut("yes\nno", 40, TextModel::kChosenByText), Lines{"yes\nno"});
  EXPECT_EQ(layOut("yes\nno", 40, TextModel::kUnicode), (Lines{"yes", "no"}));
}

TEST(FormattingChannelUnicodeTest, TheByteModelCountsBytesWhenForcedOrForLatin1) {
  // Forced bytes: 16 bytes of Cyrillic, eight letters, fill a line of 16.
  const std::string cyrillic = "абвг деж";
  EXPECT_EQ(layOut(cyrillic, 10, TextModel::kBytes), (Lines{"абвг", "деж"}));
  EXPECT_EQ(layOut(cyrillic, 10, TextModel::kChosenByText), Lines{cyrillic});
  // Latin-1 is not UTF-8: byte rules, whichever model is asked for, and not
  // a byte lost.
  for (TextModel model : {TextModel::kChosenByText, TextModel::kUnicode, TextModel::kBytes}) {
    EXPECT_EQ(layOut("Gr\366\337e \374ber alles", 10, model),
              (Lines{"Gr\366\337e", "\374ber alles"}));
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
  hidden.onMessage(Message("äpp", "x", error, "en", "yes\nno"));
  EXPECT_EQ(hidden.lines, Lines{"yes\nno"});

  // The default header wraps with the text, counted in columns; the blank
  // behind the text stays where it fits.
  RecordingChannel header;
  header.setRightMargin(11);
  header.onMessage(Message("app", "x", error, "ja", "日本"));
  EXPECT_EQ(header.lines, Lines{"app:x: 日本 "});
}

}  // namespace
}  // namespace msg
