#include "msg/MTE.h"

#include <cstring>
#include <memory>

#include "msg/MessageHandler.h"

namespace msg {

namespace {

// Copies of the three strings, one after the other with their terminators,
// in one block made with new[]: the namespace starts it. One block instead
// of three saves two allocations per loaded entry and the allocator's header
// and rounding of each (about 45 bytes). A null string is copied as "".
struct StringCopies {
  std::unique_ptr<char[]> block;
  char* identifier;
  char* text;
};

StringCopies copyAll(const char* nameSpace, const char* identifier, const char* text) {
  const char* const strings[3] = {nameSpace != nullptr ? nameSpace : "",
                                  identifier != nullptr ? identifier : "",
                                  text != nullptr ? text : ""};
  std::size_t sizes[3];
  std::size_t total = 0;
  for (int i = 0; i < 3; ++i) {
    sizes[i] = std::strlen(strings[i]) + 1;
    total += sizes[i];
  }
  StringCopies copies{std::unique_ptr<char[]>(new char[total]), nullptr, nullptr};
  char* block = copies.block.get();
  copies.identifier = block + sizes[0];
  copies.text = copies.identifier + sizes[1];
  std::memcpy(block, strings[0], sizes[0]);
  std::memcpy(copies.identifier, strings[1], sizes[1]);
  std::memcpy(copies.text, strings[2], sizes[2]);
  return copies;
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
  StringCopies copies = copyAll(nameSpace, identifier, text);
  MessageHandler* owner = link(handler, throwOnDuplicate);
  // The hash depends only on the contents, so the entry stays valid in its
  // chain when its pointers change.
  ownsStrings = true;
  this->nameSpace = copies.block.release();
  this->identifier = copies.identifier;
  this->text = copies.text;
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
    delete[] nameSpace;  // the block of all three copies
  }
}

MessageHandler* MTE::link(MessageHandler* handler, bool throwOnDuplicate) {
  MessageHandler* target = handler != nullptr ? handler : MessageHandler::object();
  target->addEntry(this, throwOnDuplicate);
  return target;
}

}  // namespace msg
