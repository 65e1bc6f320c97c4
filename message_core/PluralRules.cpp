// PluralRules: reading a rule text and choosing a category.

#include "message_core/PluralRules.h"

#include "message_core/DecimalText.h"

#include <cctype>
#include <limits>
#include <utility>

namespace msg {

// Reads one rule text into a PluralRules: a small recursive descent over
// words, numbers and the punctuation ":" ";" "," ".." "%" "=" "!=".
class PluralRuleReader {
 public:
  PluralRuleReader(const std::string& text, PluralRules& rules) : text(text), rules(rules) {}

  bool read(std::string& problem) {
    // Samples start at the first "@" of a rule and run to its ";".
    while (skipSpace(), at < text.size()) {
      std::string word;
      if (!readWord(word)) {
        return fail(problem, "a category");
      }
      PluralCategory category = PluralCategory::other;
      if (!Plurals::categoryFromName(word.c_str(), category)) {
        return fail(problem, "a known category");
      }
      if (!take(":")) {
        return fail(problem, "\":\"");
      }
      rules.named |= 1u << static_cast<unsigned>(category);
      PluralRules::Rule rule{category, static_cast<std::uint32_t>(rules.conjunctions.size()), 0};
      skipSpace();
      if (!atRuleEnd()) {
        do {
          if (!readConjunction()) {
            return fail(problem, "a relation");
          }
          ++rule.conjunctionCount;
        } while (takeWord("or"));
      }
      skipSamples();
      if (!(take(";") || (skipSpace(), at == text.size()))) {
        return fail(problem, "\";\" or the end");
      }
      if (rule.conjunctionCount > 0) {
        rules.rules.push_back(rule);
      }
    }
    return true;
  }

 private:
  bool fail(std::string& problem, const char* expected) {
    problem = std::string("expected ") + expected + " at offset " +
              decimalText(static_cast<unsigned long long>(at));
    return false;
  }

  void skipSpace() {
    while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) {
      ++at;
    }
  }

  bool atRuleEnd() {
    skipSpace();
    return at == text.size() || text[at] == ';' || text[at] == '@';
  }

  void skipSamples() {
    skipSpace();
    if (at < text.size() && text[at] == '@') {
      while (at < text.size() && text[at] != ';') {
        ++at;
      }
    }
  }

  bool take(const char* token) {
    skipSpace();
    const std::string_view wanted(token);
    if (text.compare(at, wanted.size(), wanted) == 0) {
      at += wanted.size();
      return true;
    }
    return false;
  }

  bool readWord(std::string& word) {
    skipSpace();
    const std::size_t start = at;
    while (at < text.size() && std::isalpha(static_cast<unsigned char>(text[at]))) {
      ++at;
    }
    word = text.substr(start, at - start);
    return !word.empty();
  }

  // Takes the word `wanted` if it comes next, as a whole word.
  bool takeWord(const char* wanted) {
    const std::size_t start = at;
    std::string word;
    if (readWord(word) && word == wanted) {
      return true;
    }
    at = start;
    return false;
  }

  bool readNumber(std::uint64_t& value) {
    skipSpace();
    const std::size_t start = at;
    value = 0;
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) {
      if (value > (std::numeric_limits<std::uint64_t>::max() - 9) / 10) {
        return false;
      }
      value = value * 10 + static_cast<std::uint64_t>(text[at] - '0');
      ++at;
    }
    return at > start;
  }

  bool readConjunction() {
    PluralRules::Conjunction conjunction{static_cast<std::uint32_t>(rules.relations.size()), 0};
    do {
      if (!readRelation()) {
        return false;
      }
      ++conjunction.relationCount;
    } while (takeWord("and"));
    rules.conjunctions.push_back(conjunction);
    return true;
  }

  bool readRelation() {
    std::string name;
    PluralRules::Relation relation{};
    if (!readWord(name) || name.size() != 1 || !operandOf(name[0], relation.operand)) {
      return false;
    }
    if (takeWord("mod") || take("%")) {
      std::uint64_t modulus = 0;
      if (!readNumber(modulus) || modulus == 0 || modulus > 1000000000) {
        return false;
      }
      relation.modulus = static_cast<std::uint32_t>(modulus);
    }
    if (!readOperator(relation) || !readRanges(relation)) {
      return false;
    }
    rules.relations.push_back(relation);
    return true;
  }

  // The operand a letter names; false for none. The compact exponent (c, e)
  // reads as zero: msg never shows numbers in that form.
  static bool operandOf(char letter, PluralRules::Operand& operand) {
    using Operand = PluralRules::Operand;
    static const std::pair<char, Operand> kOperands[] = {
        {'n', Operand::n}, {'i', Operand::i}, {'v', Operand::v},    {'w', Operand::w},
        {'f', Operand::f}, {'t', Operand::t}, {'c', Operand::zero}, {'e', Operand::zero}};
    for (const auto& [name, value] : kOperands) {
      if (name == letter) {
        operand = value;
        return true;
      }
    }
    return false;
  }

  // "=", "!=", "is", "is not", "in", "not in", "within", "not within".
  bool readOperator(PluralRules::Relation& relation) {
    if (take("!=")) {
      relation.negated = true;
    } else if (take("=")) {
    } else if (takeWord("is")) {
      relation.negated = takeWord("not");
    } else {
      relation.negated = takeWord("not");
      if (takeWord("within")) {
        relation.within = true;
      } else if (!takeWord("in")) {
        return false;
      }
    }
    return true;
  }

  // The values and ranges behind the operator: "1", "2..4", joined by ",".
  bool readRanges(PluralRules::Relation& relation) {
    relation.firstRange = static_cast<std::uint32_t>(rules.ranges.size());
    do {
      PluralRules::Range range{};
      if (!readNumber(range.low)) {
        return false;
      }
      range.high = range.low;
      if (take("..") && (!readNumber(range.high) || range.high < range.low)) {
        return false;
      }
      rules.ranges.push_back(range);
      ++relation.rangeCount;
    } while (take(","));
    return true;
  }

  const std::string& text;
  PluralRules& rules;
  std::size_t at = 0;
};

bool PluralRules::read(const std::string& text, std::string& problem) {
  *this = PluralRules();
  if (PluralRuleReader(text, *this).read(problem)) {
    return true;
  }
  *this = PluralRules();
  return false;
}

bool PluralRules::holds(const Relation& relation, const PluralOperands& operands) const {
  // The operand as an integer and whether a fraction follows it (n alone
  // can have one).
  std::uint64_t value = 0;
  bool fraction = false;
  bool wide = false;
  switch (relation.operand) {
    case Operand::n:
      value = operands.i;
      wide = operands.wide;
      fraction = operands.f != 0;
      break;
    case Operand::i:
      value = operands.i;
      wide = operands.wide;
      break;
    case Operand::v:
      value = operands.v;
      break;
    case Operand::w:
      value = operands.w;
      break;
    case Operand::f:
      value = operands.f;
      break;
    case Operand::t:
      value = operands.t;
      break;
    case Operand::zero:
      break;
  }
  if (relation.modulus != 0) {
    value %= relation.modulus;  // exact: the modulus divides 10^18
  } else if (wide) {
    value = std::numeric_limits<std::uint64_t>::max();
  }
  bool inside = false;
  for (std::uint32_t k = 0; k < relation.rangeCount && !inside; ++k) {
    const Range& range = ranges[relation.firstRange + k];
    inside = relation.within
                 ? value >= range.low && (value < range.high || (value == range.high && !fraction))
                 : !fraction && value >= range.low && value <= range.high;
  }
  return inside != relation.negated;
}

PluralCategory PluralRules::select(const PluralOperands& operands) const {
  for (const Rule& rule : rules) {
    for (std::uint32_t c = 0; c < rule.conjunctionCount; ++c) {
      const Conjunction& conjunction = conjunctions[rule.firstConjunction + c];
      bool all = true;
      for (std::uint32_t r = 0; r < conjunction.relationCount && all; ++r) {
        all = holds(relations[conjunction.firstRelation + r], operands);
      }
      if (all) {
        return rule.category;
      }
    }
  }
  return PluralCategory::other;
}

namespace {

// The decimal digits of `value`. Not std::to_string, whose digit table the
// shared library would export.
std::string decimal(std::uint64_t value) {
  char digits[20];
  std::size_t at = sizeof digits;
  do {
    digits[--at] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  return std::string(digits + at, sizeof digits - at);
}

}  // namespace

std::string PluralRules::integerCondition(PluralCategory category) const {
  // Each relation is written for n = i and v = w = f = t = 0: one on an
  // operand that is then constant is true or false here and drops out of
  // its conjunction, or drops the conjunction.
  std::string disjunction;
  for (const Rule& rule : rules) {
    if (rule.category != category) {
      continue;
    }
    for (std::uint32_t c = 0; c < rule.conjunctionCount; ++c) {
      const Conjunction& conjunction = conjunctions[rule.firstConjunction + c];
      std::string all;
      bool possible = true;
      for (std::uint32_t r = 0; r < conjunction.relationCount && possible; ++r) {
        const Relation& relation = relations[conjunction.firstRelation + r];
        if (relation.operand != Operand::n && relation.operand != Operand::i) {
          possible = holds(relation, PluralOperands());
          continue;
        }
        const std::string operand =
            relation.modulus != 0 ? "n % " + decimal(relation.modulus) : "n";
        std::string any;
        for (std::uint32_t k = 0; k < relation.rangeCount; ++k) {
          const Range& range = ranges[relation.firstRange + k];
          const std::string low = decimal(range.low);
          const std::string one =
              range.low == range.high
                  ? operand + " == " + low
                  : operand + " >= " + low + " && " + operand + " <= " + decimal(range.high);
          any += (any.empty() ? "" : " || ") + (relation.rangeCount > 1 ? "(" + one + ")" : one);
        }
        if (relation.negated && relation.rangeCount == 1 &&
            ranges[relation.firstRange].low == ranges[relation.firstRange].high) {
          any = operand + " != " + decimal(ranges[relation.firstRange].low);
        } else if (relation.negated) {
          any = "!(" + any + ")";
        } else if (relation.rangeCount > 1) {
          any = "(" + any + ")";
        }
        all += (all.empty() ? "" : " && ") + any;
      }
      if (!possible) {
        continue;
      }
      if (all.empty()) {
        return "1";
      }
      disjunction += (disjunction.empty() ? "" : " || ") + all;
    }
  }
  if (disjunction.empty()) {
    return "0";
  }
  return disjunction;
}

}  // namespace msg
