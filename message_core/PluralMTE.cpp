#include "msg/PluralMTE.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "message_core/MessageTable.h"
#include "message_core/PluralForms.h"
#include "msg/MessageHandler.h"

namespace msg {

namespace {

// Reads "=N" into `value`; false for anything else.
bool readExact(const char* form, std::uint64_t& value) {
  if (form[0] != '=' || form[1] == '\0') {
    return false;
  }
  value = 0;
  int digits = 0;
  for (const char* c = form + 1; *c != '\0'; ++c) {
    if (*c < '0' || *c > '9' || ++digits > 18) {
      return false;
    }
    value = value * 10 + static_cast<std::uint64_t>(*c - '0');
  }
  return true;
}

// The variants, made before anything is linked, so that a bad form links
// nothing. Categories are kept as a mask and exact values in the forms
// themselves to find a form given twice.
std::unique_ptr<PluralForms> makeForms(PluralKind kind, unsigned countPlaceholder,
                                       const char* language, const char* other,
                                       std::initializer_list<PluralMTE::Form> forms) {
  if (other == nullptr) {
    throw std::invalid_argument("a plural entry needs its other text");
  }
  auto made = std::make_unique<PluralForms>(kind, countPlaceholder, Language(language), other);
  unsigned categories = 0;
  for (const PluralMTE::Form& form : forms) {
    if (form.form == nullptr || form.text == nullptr) {
      throw std::invalid_argument("a plural form needs a name and a text");
    }
    const std::string name = form.form;
    std::uint64_t value = 0;
    PluralCategory category = PluralCategory::other;
    if (readExact(form.form, value)) {
      for (const auto& exact : made->exactTexts()) {
        if (exact.first == value) {
          throw std::invalid_argument("the plural form " + name + " comes twice");
        }
      }
      made->addExact(value, form.text);
    } else if (!Plurals::categoryFromName(form.form, category) ||
               category == PluralCategory::other) {
      throw std::invalid_argument("\"" + name +
                                  "\" is no plural form (zero, one, two, few, many or =N; "
                                  "other is the entry's own text)");
    } else if ((categories & (1u << static_cast<unsigned>(category))) != 0) {
      throw std::invalid_argument("the plural form " + name + " comes twice");
    } else {
      categories |= 1u << static_cast<unsigned>(category);
      made->setText(category, form.text);
    }
  }
  return made;
}

}  // namespace

PluralMTE::PluralMTE(short severity, const char* language, const char* nameSpace,
                     const char* identifier, PluralKind kind, unsigned countPlaceholder,
                     const char* other, std::initializer_list<Form> forms, MessageHandler* handler,
                     bool throwOnDuplicate)
    : PluralMTE(makeForms(kind, countPlaceholder, language, other, forms), severity, language,
                nameSpace, identifier, handler, throwOnDuplicate) {}

PluralMTE::PluralMTE(std::unique_ptr<PluralForms> forms, short severity, const char* language,
                     const char* nameSpace, const char* identifier, MessageHandler* handler,
                     bool throwOnDuplicate)
    : linked(severity, language, nameSpace, identifier, forms->other(), handler, throwOnDuplicate,
             false) {
  MessageHandler* owner = handler != nullptr ? handler : MessageHandler::object();
  owner->messageTable->attachPluralForms(&linked, std::move(forms));
}

PluralMTE::~PluralMTE() = default;

}  // namespace msg
