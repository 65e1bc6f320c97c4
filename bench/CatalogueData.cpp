#include "CatalogueData.h"

#include <array>
#include <utility>

namespace msg_bench {
namespace {

// SplitMix64: small, fast and the same on every platform, unlike the
// distributions of <random>.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state(seed) {}

  std::uint64_t next() {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

  // A number below `bound`; the modulo bias is irrelevant here.
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }

  template <typename T, std::size_t N>
  const T& pick(const std::array<T, N>& items) {
    return items[below(N)];
  }

 private:
  std::uint64_t state;
};

constexpr std::size_t kMinTextBytes = 40;
constexpr std::size_t kMaxTextBytes = 80;
constexpr std::size_t kMaxArguments = 3;
// "&n" in msg syntax, the one the byte limits are measured in.
constexpr std::size_t kMsgArgumentBytes = 2;

const std::array<const char*, 12> kAreas = {"file", "net", "db",   "ui",    "auth", "cfg",
                                            "job",  "io",  "mail", "print", "sync", "user"};
const std::array<const char*, 16> kNouns = {
    "connection", "record",  "session", "buffer", "document", "queue",  "account", "index",
    "cache",      "channel", "socket",  "folder", "report",   "backup", "schema",  "token"};
const std::array<const char*, 16> kEvents = {
    "Lost",    "Opened",  "Closed",  "Failed",  "Ready",   "Expired", "Locked", "Missing",
    "Invalid", "Created", "Deleted", "Changed", "Timeout", "Denied",  "Full",   "Empty"};

const std::array<const char*, 24> kEnglishWords = {
    "the",    "file",   "could",  "not",     "be",      "opened",   "connection", "to",
    "server", "was",    "closed", "after",   "waiting", "for",      "the",        "record",
    "is",     "locked", "by",     "another", "user",    "retrying", "in",         "seconds"};
const std::array<const char*, 24> kGermanWords = {
    "die",        "Datei",   "konnte",     "nicht",       "geöffnet",       "werden",
    "Verbindung", "zum",     "Server",     "wurde",       "geschlossen",    "nach",
    "Schlüssel",  "für",     "Größe",      "Übertragung", "fehlgeschlagen", "Prüfsumme",
    "Benutzer",   "Zugriff", "verweigert", "läuft",       "Änderung",       "Öffnen"};
const std::array<const char*, 8> kAustrianWords = {"Jänner",  "Feber", "Paradeiser", "Erdäpfel",
                                                   "Sackerl", "heuer", "Topfen",     "Kasten"};
const std::array<const char*, 4> kEnglishFillers = {"a", "an", "to", "of"};
const std::array<const char*, 4> kGermanFillers = {"an", "zu", "im", "um"};

enum class Flavour : std::uint8_t { kEnglish, kGerman, kAustrian };

// One text of `argumentCount` arguments with a random length between the
// limits, in the words of `flavour`. German texts may order their arguments
// differently from English ones, as translations do.
Text makeText(Random& random, std::size_t argumentCount, Flavour flavour) {
  const std::size_t target = kMinTextBytes + random.below(kMaxTextBytes - kMinTextBytes + 1);
  // Each argument takes its bytes and a separating blank; the full stop one.
  const std::size_t reserved = argumentCount * (kMsgArgumentBytes + 1) + 1;

  std::vector<std::string> words;
  std::size_t length = 0;  // words and the blanks between them
  while (length + reserved < target) {
    const char* word = nullptr;
    switch (flavour) {
      case Flavour::kEnglish:
        word = random.pick(kEnglishWords);
        break;
      case Flavour::kGerman:
        word = random.pick(kGermanWords);
        break;
      case Flavour::kAustrian:
        word = random.below(3) == 0 ? random.pick(kAustrianWords) : random.pick(kGermanWords);
        break;
    }
    std::string candidate = word;
    const std::size_t separator = words.empty() ? 0 : 1;
    if (length + separator + candidate.size() + reserved > kMaxTextBytes) {
      candidate =
          flavour == Flavour::kEnglish ? random.pick(kEnglishFillers) : random.pick(kGermanFillers);
      if (length + separator + candidate.size() + reserved > kMaxTextBytes) {
        break;
      }
    }
    length += separator + candidate.size();
    words.push_back(std::move(candidate));
  }
  if (!words.empty() && flavour != Flavour::kEnglish) {
    // German nouns start with a capital anyway; make the first word one.
    words[0][0] = static_cast<char>(words[0][0] >= 'a' && words[0][0] <= 'z' ? words[0][0] - 32
                                                                             : words[0][0]);
  }

  // Argument order: rising in English, a random rotation otherwise.
  std::vector<unsigned> order;
  const std::size_t rotation =
      flavour == Flavour::kEnglish || argumentCount == 0 ? 0 : random.below(argumentCount);
  for (std::size_t i = 0; i < argumentCount; ++i) {
    order.push_back(static_cast<unsigned>((i + rotation) % argumentCount));
  }
  // Each argument goes in front of the word at a rising random position.
  std::vector<std::size_t> slots;
  std::size_t lowest = 0;
  for (std::size_t i = 0; i < argumentCount; ++i) {
    const std::size_t slot = lowest + random.below(words.size() + 1 - lowest);
    slots.push_back(slot);
    lowest = slot;
  }

  Text text;
  std::string piece;
  std::size_t nextArgument = 0;
  for (std::size_t w = 0; w <= words.size(); ++w) {
    while (nextArgument < argumentCount && slots[nextArgument] == w) {
      if (!piece.empty() || !text.pieces.empty()) {
        piece += ' ';
      }
      text.pieces.push_back(std::move(piece));
      piece.clear();
      text.arguments.push_back(order[nextArgument]);
      ++nextArgument;
    }
    if (w < words.size()) {
      if (!piece.empty() || !text.pieces.empty()) {
        piece += ' ';
      }
      piece += words[w];
    }
  }
  piece += '.';
  text.pieces.push_back(std::move(piece));
  return text;
}

Random randomOfKey(std::size_t index) {
  return Random(0x6D7367ull * 1000003ull + index);
}

// The first draws of a key's stream make its identifier.
std::string identifierFrom(Random& random, std::size_t index) {
  return std::string(random.pick(kAreas)) + "_" + random.pick(kNouns) + random.pick(kEvents) +
         std::to_string(index);
}

}  // namespace

std::string Text::render(PlaceholderSyntax syntax) const {
  std::string out = pieces[0];
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string number = std::to_string(arguments[i]);
    switch (syntax) {
      case PlaceholderSyntax::kMsg:
        out += "&" + number;
        break;
      case PlaceholderSyntax::kPrintf:
        out += "%" + std::to_string(arguments[i] + 1) + "$s";
        break;
      case PlaceholderSyntax::kBraces:
        out += "{" + number + "}";
        break;
    }
    out += pieces[i + 1];
  }
  return out;
}

std::string makeIdentifier(std::size_t index) {
  Random random = randomOfKey(index);
  return identifierFrom(random, index);
}

std::string Text::fill(const char* const values[3]) const {
  std::string out = pieces[0];
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    out += values[arguments[i]];
    out += pieces[i + 1];
  }
  return out;
}

Entry makeEntry(std::size_t index) {
  Random random = randomOfKey(index);
  Entry entry;
  entry.identifier = identifierFrom(random, index);
  const std::size_t argumentCount = random.below(kMaxArguments + 1);
  entry.english = makeText(random, argumentCount, Flavour::kEnglish);
  entry.german = makeText(random, argumentCount, Flavour::kGerman);
  if (hasAustrianText(index)) {
    entry.austrian = makeText(random, argumentCount, Flavour::kAustrian);
  }
  return entry;
}

const Text& preferredText(const Entry& entry, std::size_t index) {
  return hasAustrianText(index) ? entry.austrian : entry.german;
}

std::vector<std::uint32_t> keySequence(std::size_t keyCount, std::size_t length) {
  Random random(0x5EEDull);
  std::vector<std::uint32_t> sequence;
  sequence.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    sequence.push_back(static_cast<std::uint32_t>(random.below(keyCount)));
  }
  return sequence;
}

}  // namespace msg_bench
