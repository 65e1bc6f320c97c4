// Language: a compact language value of four 8-bit characters.

#ifndef MSG_LANGUAGE_H_
#define MSG_LANGUAGE_H_

#include <cstddef>
#include <cstring>
#include <string>

namespace msg {

// A language code and an optional region code, packed into exactly four
// bytes: bytes 0 and 1 hold the language ("de"), bytes 2 and 3 the region
// ("AT"), and a language without a region has 0 in both region bytes.
// Codes are stored as given: no case folding and no validation, so "DE"
// differs from "de".
//
// A Language is a plain value; copy it freely. Everything is inline.
struct Language {
  // No language: all four bytes are 0. Matches no real tag.
  Language() : tagChars{0, 0, 0, 0} {}

  // Packs a tag such as "en", "de-AT" or "de-AT-1996":
  //   bytes 0, 1 = the first two characters;
  //   bytes 2, 3 = the fourth and fifth characters if the third is '-',
  //                otherwise 0.
  // Anything behind the fifth character is ignored, so "de-AT-1996" packs as
  // "de-AT" and "deu" or "de_AT" as "de".
  //
  // Short tags are never read past their terminator: a byte whose character
  // would lie at or behind the terminating NUL is 0. So "" and a null tag
  // give the empty Language(), "d" gives 'd' 0 0 0, "de-" gives "de" with no
  // region and "de-A" gives 'd' 'e' 'A' 0.
  Language(const char* tag) : tagChars{0, 0, 0, 0} {  // NOLINT: implicit by design
    if (tag == nullptr) {
      return;
    }
    // Bytes are read only below the measured length. A loop that stops at
    // the terminator is just as safe, but g++ -O3 cannot always prove it and
    // warns (-Warray-bounds) in the caller's code when the tag is a short
    // literal; the range of strlen() it does follow, also for a choice
    // between literals and for arrays of known size.
    const std::size_t length = std::strlen(tag);
    if (length >= 1) {
      tagChars[0] = tag[0];
    }
    if (length >= 2) {
      tagChars[1] = tag[1];
    }
    if (length >= 4 && tag[2] == '-') {
      tagChars[2] = tag[3];
      if (length >= 5) {
        tagChars[3] = tag[4];
      }
    }
  }

  // True when all four bytes are equal (one 32-bit compare).
  bool operator==(const Language& other) const {
    return std::memcmp(tagChars, other.tagChars, sizeof tagChars) == 0;
  }
  bool operator!=(const Language& other) const { return !(*this == other); }

  // True when the region bytes are both 0 (a bare language such as "de").
  bool hasRegion() const { return tagChars[2] != 0 || tagChars[3] != 0; }

  // The tag as text: "de", "de-AT"; zero bytes are left out.
  std::string toString() const {
    std::string tag;
    for (int i = 0; i < 2; ++i) {
      if (tagChars[i] != 0)
        tag += tagChars[i];
    }
    if (hasRegion()) {
      tag += '-';
      for (int i = 2; i < 4; ++i) {
        if (tagChars[i] != 0)
          tag += tagChars[i];
      }
    }
    return tag;
  }

  // The four bytes, packed as Language(const char*) describes.
  char tagChars[4];
};

}  // namespace msg

#endif  // MSG_LANGUAGE_H_
