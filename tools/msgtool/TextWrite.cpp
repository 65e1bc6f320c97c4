#include "TextWrite.h"

#include "DocumentCharacters.h"
#include "GettextPlurals.h"
#include "Placeholders.h"
#include "PluralNeeds.h"
#include "message_documents/PluralMessage.h"
#include "msg/Plural.h"

namespace msgtool {

std::optional<MessageDocumentEditor::Variant> TextWrite::takeVariant(std::string& key) {
  const std::size_t open = key.rfind('[');
  const std::size_t space = key.find(' ', open == std::string::npos ? 0 : open);
  if (open == std::string::npos || key.back() != ']' || space == std::string::npos) {
    return std::nullopt;
  }
  MessageDocumentEditor::Variant variant{key.substr(open + 1, space - open - 1),
                                         key.substr(space + 1, key.size() - space - 2)};
  msg::PluralCategory category;
  const bool exact = variant.value.size() > 1 && variant.value[0] == '=' &&
                     variant.value.find_first_not_of("0123456789", 1) == std::string::npos;
  if ((variant.attribute != "plural" && variant.attribute != "ordinal") ||
      (!exact && !msg::Plurals::categoryFromName(variant.value.c_str(), category))) {
    return std::nullopt;
  }
  if (variant.value == "other") {
    variant = MessageDocumentEditor::Variant();  // the text without the attribute
  }
  key.erase(open);
  return variant;
}

std::vector<TextWrite> TextWrite::writesOf(
    const IncomingUnit& unit, const std::optional<MessageDocumentEditor::Variant>& variant,
    const std::string& language) {
  const msg::Language tag(language.c_str());
  if (variant) {
    const msg::PluralKind kind =
        variant->attribute == "ordinal" ? msg::PluralKind::ordinal : msg::PluralKind::cardinal;
    msg::PluralVariant read;
    const bool single = !variant->value.empty() &&
                        msg::PluralMessage::readVariant(variant->value, read) &&
                        choosesOneNumber(read, tag, kind);
    return {TextWrite{*variant, unit.target, single}};
  }
  if (!unit.sourcePlural) {
    return {TextWrite{MessageDocumentEditor::Variant(), unit.target, false}};
  }
  // Each form as its category; where the last form stands for `other`,
  // which whole numbers never reach, it is written as both.
  const GettextPlurals plurals = GettextPlurals::of(tag);
  const LanguagePlurals& rules = LanguagePlurals::of(tag, msg::PluralKind::cardinal);
  std::vector<TextWrite> writes;
  for (std::size_t form = 0; form < unit.forms.size(); ++form) {
    const msg::PluralCategory category = plurals.forms[form];
    const bool single = rules.forOneNumber(category);
    if (category != msg::PluralCategory::other) {
      writes.push_back(
          TextWrite{{"plural", msg::Plurals::categoryName(category)}, unit.forms[form], single});
    }
    if (category == msg::PluralCategory::other ||
        (form + 1 == unit.forms.size() && plurals.lastStandsForOther)) {
      writes.push_back(TextWrite{MessageDocumentEditor::Variant(), unit.forms[form], false});
    }
  }
  return writes;
}

std::string TextWrite::fault(const std::set<unsigned>& expected, unsigned count,
                             const std::string& which) const {
  if (text.empty()) {
    return which + " is empty";
  }
  const std::string unwritable = whyDocumentCannotHold(text);
  if (!unwritable.empty()) {
    return which + " holds " + unwritable;
  }
  const std::set<unsigned> found = placeholderNumbers(text);
  if (!placeholdersFit(found, expected, count, single)) {
    return which + " has the placeholders " + describePlaceholders(found) + ", its source " +
           describePlaceholders(expected);
  }
  return std::string();
}

}  // namespace msgtool
