#include "msg/MTE.h"

#include <cstring>
#include <memory>

#include "message_core/StringCopy.h"
#include "msg/MessageHandler.h"

namespace msg {

namespace {

// A NUL-terminated copy of `s`, made with new[].
std::unique_ptr<char[]> copyOf(const char* s) {
  return std::unique_ptr<char[]>(copyString(s));
}

}  // namespace

// Both public constructors fill the fields through the unlinked one and then
// link. Should linking throw, the destructor runs on an entry that owns
// nothing yet, and so frees nothing.
MTE::MTE(short severity, const char* language, const char* nameSpace, const char* identifier,
         const char* text, MessageHandler* handler, bool throwOnDuplicate, bool copyStrings)
    : MTE(Unlinked{}, severity, Language(language), nameSpace, identifier, text) {
  if (!copyStrings) {
    link(handler, throwOnDuplicate);
    return;
  }
  // The copies are made before linking but adopted only after it: while the
  // entry is being linked it points at the caller's strings, so a
  // MessageExists carries the caller's pointers, and a failed link leaves no
  // copy behind. Copying first also keeps the caller's strings safe to read
  // when they belong to the very entry that linking replaces and deletes.
  std::unique_ptr<char[]> ownNamespace = copyOf(nameSpace);
  std::unique_ptr<char[]> ownIdentifier = copyOf(identifier);
  std::unique_ptr<char[]> ownText = copyOf(text);
  MessageHandler* owner = link(handler, throwOnDuplicate);
  // The hash depends only on the contents, so the entry stays valid in its
  // chain when its pointers change.
  ownsStrings = true;
  this->nameSpace = ownNamespace.release();
  this->identifier = ownIdentifier.release();
  this->text = ownText.release();
  owner->noteOwnedEntry(this);
}

MTE::MTE(short severity, int language, const char* nameSpace, const char* identifier,
         const char* text, MessageHandler* handler, bool throwOnDuplicate)
    : MTE(Unlinked{}, severity, language == 2 ? Language("de") : Language("en"), nameSpace,
          identifier, text) {
  link(handler, throwOnDuplicate);
}

MTE::MTE(Unlinked, short severity, Language language, const char* nameSpace, const char* identifier,
         const char* text)
    : next(nullptr),
      severity(severity),
      language(language),
      keyCheck(0),
      nameSpace(nameSpace),
      identifier(identifier),
      text(text),
      cachedHash(0),
      ownsStrings(false) {}

MTE::~MTE() {
  if (ownsStrings) {
    delete[] nameSpace;
    delete[] identifier;
    delete[] text;
  }
}

MessageHandler* MTE::link(MessageHandler* handler, bool throwOnDuplicate) {
  MessageHandler* target = handler != nullptr ? handler : MessageHandler::object();
  target->addEntry(this, throwOnDuplicate);
  return target;
}

}  // namespace msg
