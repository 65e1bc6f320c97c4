#include "message_documents/PluralMessage.h"

#include <algorithm>
#include <set>
#include <utility>

#include "message_core/DecimalText.h"
#include "message_core/PlaceholderScanner.h"

namespace msg {

namespace {

// The placeholder `text` consists of, as "&1" names 1. False for any other
// text, also for a placeholder that substitution would never fill.
bool readPlaceholder(const std::string& text, unsigned& number) {
  PlaceholderScanner scanner(text.data(), text.data() + text.size());
  PlaceholderRun run{};
  if (!scanner.next(run) || run.offset != 0 || run.length != text.size() || !run.replaceable) {
    return false;
  }
  number = run.value;
  return true;
}

// Whether `text` has a placeholder that substitution of `number` fills.
bool hasPlaceholder(const std::string& text, unsigned number) {
  PlaceholderScanner scanner(text.data(), text.data() + text.size());
  PlaceholderRun run{};
  while (scanner.next(run)) {
    if (run.replaceable && run.value == number) {
      return true;
    }
  }
  return false;
}

std::string formName(const PluralVariant& variant) {
  return variant.exact ? "=" + decimalText(static_cast<unsigned long long>(variant.value))
                       : std::string(Plurals::categoryName(variant.category));
}

}  // namespace

bool PluralMessage::readCount(const std::string& attribute, unsigned& number) {
  number = 0;
  return attribute.empty() || readPlaceholder(attribute, number);
}

bool PluralMessage::readVariant(const std::string& attribute, PluralVariant& variant) {
  variant = PluralVariant();
  if (attribute.size() >= 2 && attribute[0] == '=' && attribute.size() <= 19) {
    for (std::size_t k = 1; k < attribute.size(); ++k) {
      if (attribute[k] < '0' || attribute[k] > '9') {
        return false;
      }
      variant.value = variant.value * 10 + static_cast<std::uint64_t>(attribute[k] - '0');
    }
    variant.exact = true;
    return true;
  }
  return Plurals::categoryFromName(attribute.c_str(), variant.category);
}

void PluralMessage::begin(const DocumentText& message, int index) {
  messageIndex = index;
  countAttribute = message.count;
  count = 0;
  countNamed = readCount(countAttribute, count);
  plural = !countAttribute.empty();
  kindKnown = false;
  pluralKind = PluralKind::cardinal;
  texts.clear();
}

void PluralMessage::add(const DocumentText& text, int index) {
  if (!text.plural.empty() || !text.ordinal.empty()) {
    // The first variant decides the kind; another kind is refused in check().
    if (!kindKnown) {
      pluralKind = text.plural.empty() ? PluralKind::ordinal : PluralKind::cardinal;
      kindKnown = true;
    }
    plural = true;
  }
  texts.push_back(
      Text{index, text.effectiveLanguage(), text.plural, text.ordinal, text.textElement});
}

void PluralMessage::check(std::vector<PluralProblem>& problems) const {
  if (!plural) {
    return;
  }
  const auto problem = [&](int textIndex, std::string what) {
    problems.push_back(PluralProblem{messageIndex, textIndex, std::move(what)});
  };
  const unsigned number = count;
  if (!countNamed) {
    problem(-1, "count=\"" + countAttribute + "\" is no placeholder; write it as &0, &1, ...");
  }

  std::set<std::pair<std::string, std::string>> seen;  // language, form
  std::set<std::string> withVariants;
  std::set<std::string> withOther;
  bool countFound = false;
  bool mixReported = false;
  for (const Text& text : texts) {
    if (!text.plural.empty() && !text.ordinal.empty()) {
      problem(text.index, "a Text has either plural or ordinal, not both");
      continue;
    }
    const bool isOrdinal = !text.ordinal.empty();
    const std::string& attribute = isOrdinal ? text.ordinal : text.plural;
    PluralVariant variant;
    if (!attribute.empty()) {
      if ((isOrdinal ? PluralKind::ordinal : PluralKind::cardinal) != pluralKind && !mixReported) {
        problem(text.index, "plural and ordinal texts are mixed in one message");
        mixReported = true;
      }
      if (!readVariant(attribute, variant)) {
        problem(text.index, std::string(isOrdinal ? "ordinal" : "plural") + "=\"" + attribute +
                                "\" is no category (zero, one, two, few, many, other) and no "
                                "exact value (=0, =1, ...)");
        continue;
      }
    }
    const std::string form = formName(variant);
    if (!seen.emplace(text.language, form).second) {
      problem(text.index, "the form " + form + " of language " + text.language + " comes twice");
    }
    (form == "other" ? withOther : withVariants).insert(text.language);
    if (countNamed && !countFound && hasPlaceholder(text.element.getChildText(), number)) {
      countFound = true;
    }
  }
  for (const std::string& language : withVariants) {
    if (withOther.count(language) == 0) {
      problem(-1, "language " + language +
                      " has plural variants but no other text (a Text without plural, or "
                      "plural=\"other\")");
    }
  }
  if (countNamed && !countFound) {
    problem(-1, "the count &" + decimalText(static_cast<unsigned long long>(number)) +
                    " is in no text of the message");
  }
}

std::vector<PluralLanguage> PluralMessage::languages() const {
  std::vector<PluralLanguage> result;
  for (const Text& text : texts) {
    auto language = std::find_if(result.begin(), result.end(), [&](const PluralLanguage& l) {
      return l.language == text.language;
    });
    if (language == result.end()) {
      result.push_back(PluralLanguage{text.language, std::string(), {}});
      language = result.end() - 1;
    }
    PluralVariant variant;
    readVariant(text.plural.empty() ? text.ordinal : text.plural, variant);
    variant.text = text.element.getChildText();
    if (!variant.exact && variant.category == PluralCategory::other) {
      language->other = std::move(variant.text);
    } else {
      language->variants.push_back(std::move(variant));
    }
  }
  return result;
}

}  // namespace msg
