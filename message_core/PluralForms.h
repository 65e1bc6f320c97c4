// PluralForms: the variants of one plural catalogue entry, and the choice
// among them by a count.
//
// Private to the library: not installed, nothing here is exported. The
// document loader and the compiled catalogue loader make these; the message
// table keeps them beside the entries (MessageTable::attachPluralForms).

#ifndef MSG_MESSAGE_CORE_PLURALFORMS_H_
#define MSG_MESSAGE_CORE_PLURALFORMS_H_

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "message_core/PluralOperands.h"
#include "message_core/PluralRules.h"
#include "msg/Language.h"
#include "msg/Plural.h"

namespace msg {

// The texts of one key in one language beside its `other` text (which is
// the entry's own text): one per category and one per exact value, all
// with the same placeholders as a rule, and the number of the placeholder
// that holds the count.
//
// Texts are borrowed (they must outlive the object, as the strings of a
// compiled catalogue do) or kept: keep() copies a text into the object.
// Immutable once attached to a table; choose() may run in many threads.
class PluralForms {
 public:
  // `language` is the entry's language: its rules are looked up here once.
  // REQUIRES: other is not null and outlives the object.
  PluralForms(PluralKind kind, unsigned countPlaceholder, Language language, const char* other)
      : formKind(kind),
        count(countPlaceholder),
        rules(&PluralRules::forLanguage(language, kind)),
        texts{nullptr, nullptr, nullptr, nullptr, nullptr, other} {}

  PluralForms(const PluralForms&) = delete;
  PluralForms& operator=(const PluralForms&) = delete;

  // A copy of `text` that lives as long as this object.
  const char* keep(const std::string& text) {
    if (kept == nullptr) {
      kept = std::make_unique<std::deque<std::string>>();
    }
    return kept->emplace_back(text).c_str();
  }

  // Sets the text of `category`; `other` replaces the entry's text here.
  void setText(PluralCategory category, const char* text) {
    texts[static_cast<std::size_t>(category)] = text;
  }
  // Adds the text for the exact value `value`.
  void addExact(std::uint64_t value, const char* text) { exacts.emplace_back(value, text); }

  // The text for a count shown as `countText`: the text of its exact value
  // if the count is a whole number without fraction digits and has one, else
  // the text of its category, else `other`. A text that is no number
  // (see msg::pluralCategory) takes `other`.
  const char* choose(const char* countText) const {
    PluralOperands operands;
    if (!operands.read(countText)) {
      return other();
    }
    if (operands.v == 0 && !operands.wide) {
      for (const auto& exact : exacts) {
        if (exact.first == operands.i) {
          return exact.second;
        }
      }
    }
    const char* text = texts[static_cast<std::size_t>(rules->select(operands))];
    return text != nullptr ? text : other();
  }

  PluralKind kind() const { return formKind; }
  unsigned countPlaceholder() const { return count; }
  const char* other() const { return texts[static_cast<std::size_t>(PluralCategory::other)]; }
  // The text of `category`, null if it has none (`other` always has one).
  const char* text(PluralCategory category) const {
    return texts[static_cast<std::size_t>(category)];
  }
  const std::vector<std::pair<std::uint64_t, const char*>>& exactTexts() const { return exacts; }

 private:
  PluralKind formKind;
  unsigned count;
  const PluralRules* rules;
  const char* texts[kPluralCategoryCount];
  std::vector<std::pair<std::uint64_t, const char*>> exacts;
  // A deque: growing it moves no string. Made on the first keep(), so forms
  // that borrow all their texts (a compiled catalogue's) allocate nothing
  // for it.
  std::unique_ptr<std::deque<std::string>> kept;
};

}  // namespace msg

#endif  // MSG_MESSAGE_CORE_PLURALFORMS_H_
