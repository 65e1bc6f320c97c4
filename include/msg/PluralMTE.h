// PluralMTE: a plural or ordinal catalogue entry registered in code.

#ifndef MSG_PLURALMTE_H_
#define MSG_PLURALMTE_H_

#include <initializer_list>
#include <memory>

#include "msg/MTE.h"
#include "msg/Plural.h"
#include "msg/export.h"

namespace msg {

class MessageHandler;
class PluralForms;

// What a message document's plural or ordinal message gives one language,
// for programs that register their texts in code: an entry whose text is
// the `other` form, with variants for categories and exact values beside
// it. A lookup of the key then chooses among them by the count, exactly as
// for a loaded document.
//
//   static const msg::PluralMTE deleted(
//       msg::info, "en", "app", "deleted", msg::PluralKind::cardinal, 0,
//       "&0 files deleted.", {{"one", "&0 file deleted."}, {"=0", "No files deleted."}});
//
// Like an MTE made with copyStrings false (the entry is one, beside which
// the variants lie): every string is borrowed and must outlive the handler,
// and the object must too; a static object with literals does both. The
// handler's table owns the variants.
class MSG_EXPORT PluralMTE {
 public:
  // One variant: `form` is a category ("zero", "one", "two", "few", "many")
  // or an exact value ("=0", "=12"; at most 18 digits), `text` its text.
  struct Form {
    const char* form;  // the category or exact value
    const char* text;  // the text of the variant
  };

  // Checks the forms, then links the entry (severity, language, namespace,
  // identifier, `other` as its text) into `handler`, or into
  // MessageHandler::object()'s table if it is null, as the MTE constructor
  // does, and attaches the variants: the count stands in placeholder
  // &countPlaceholder, and `kind` names the rules that choose.
  // Raises std::invalid_argument, linking nothing, for a null string, a
  // form that names no category or exact value, "other" (that is `other`),
  // or the same form twice; MessageExists as the MTE constructor does.
  // REQUIRES: nameSpace, identifier and other are not null.
  PluralMTE(short severity, const char* language, const char* nameSpace, const char* identifier,
            PluralKind kind, unsigned countPlaceholder, const char* other,
            std::initializer_list<Form> forms, MessageHandler* handler = nullptr,
            bool throwOnDuplicate = false);

  PluralMTE(const PluralMTE&) = delete;
  PluralMTE& operator=(const PluralMTE&) = delete;

  // Leaves the entry linked, as ~MTE does.
  ~PluralMTE();

  // The entry this object linked, with the `other` text.
  const MTE& entry() const { return linked; }

 private:
  PluralMTE(std::unique_ptr<PluralForms> forms, short severity, const char* language,
            const char* nameSpace, const char* identifier, MessageHandler* handler,
            bool throwOnDuplicate);

  MTE linked;
};

}  // namespace msg

#endif  // MSG_PLURALMTE_H_
