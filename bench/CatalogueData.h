// CatalogueData: the benchmark catalogue, made deterministically in memory.
//
// Every contender reads the same catalogue: the generator writes it out in
// each contender's own format, and the benchmarks rebuild the same content in
// memory to check what the contenders return and to fill tables of other
// sizes (the scale workload).

#ifndef MSG_BENCH_CATALOGUEDATA_H_
#define MSG_BENCH_CATALOGUEDATA_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace msg_bench {

// The namespace of every key.
inline constexpr const char* kNamespace = "app";

// Keys of the standard catalogue; the scale workload makes others.
inline constexpr std::size_t kStandardKeyCount = 10000;

// Every tenth key (index % 10 == 0) has an Austrian German text.
inline bool hasAustrianText(std::size_t keyIndex) {
  return keyIndex % 10 == 0;
}

// The ways the contenders write a numbered argument (0-based number n):
// "&n" for msg, "%<n+1>$s" for printf (gettext), "{n}" for ICU and fmt.
enum class PlaceholderSyntax : std::uint8_t { kMsg, kPrintf, kBraces };

// One text as a sequence of literal pieces and arguments, so that it can be
// written in any placeholder syntax: pieces[0] arg[0] pieces[1] ... with
// pieces.size() == arguments.size() + 1.
struct Text {
  std::vector<std::string> pieces;  // UTF-8
  std::vector<unsigned> arguments;  // argument numbers, each of 0 .. count-1 once

  std::string render(PlaceholderSyntax syntax) const;

  // The finished text with argument n replaced by values[n].
  std::string fill(const char* const values[3]) const;
};

// One key with its texts.
struct Entry {
  std::string identifier;  // [A-Za-z0-9_] only, so it is a valid key everywhere
  Text english;
  Text german;
  Text austrian;  // meaningful only if hasAustrianText(index)
};

// The entry of key `index`; the same for every index on every run. Texts
// are 40 to 80 bytes in msg syntax, German ones carry UTF-8 umlauts, and
// every text has 0 to 3 arguments (the same number in each language).
Entry makeEntry(std::size_t index);

// The identifier of key `index` alone (the same as makeEntry(index)'s).
std::string makeIdentifier(std::size_t index);

// The text that the preference de-AT, de, en chooses for `entry`.
const Text& preferredText(const Entry& entry, std::size_t index);

// A fixed pseudo-random sequence of `length` key indices below `keyCount`.
std::vector<std::uint32_t> keySequence(std::size_t keyCount, std::size_t length);

// The three string arguments of the render and write workloads.
inline constexpr const char* kArgument0 = "config.xml";
inline constexpr const char* kArgument1 = "4711";
inline constexpr const char* kArgument2 = "Hausverwaltung";

}  // namespace msg_bench

#endif  // MSG_BENCH_CATALOGUEDATA_H_
