#include "msg/MessageHandler.h"

#include <memory>

#include "message_core/CompiledCatalogueStorage.h"
#include "message_core/MessageTable.h"
#include "msg/MTE.h"
#include "msg/Message.h"
#include "msg/MessageChannel.h"
#include "msg/MessageExceptions.h"

namespace msg {

namespace {

// A chain is allowed to grow past this average length before the table is
// rebuilt with about twice the buckets.
constexpr std::uint32_t kMaxAverageChainLength = 50;

}  // namespace

MessageHandler::MessageHandler()
    : parent(nullptr),
      severityLevel(info),
      languageList(Language("en")),
      messageChannel(nullptr),
      messageChannel2(nullptr),
      messageChannelOwned(false),
      messageChannel2Owned(false),
      messageTable(nullptr) {
  // The channel is held until the table exists, so a failed allocation
  // gives it back.
  std::unique_ptr<MessageChannel> channel(new MessageChannel());
  messageTable = new MessageTable();
  messageChannel = channel.release();
  messageChannelOwned = true;
}

MessageHandler::MessageHandler(const MessageHandler* parent)
    : parent(parent),
      severityLevel(parent->severityLevel),
      languageList(parent->languageList),
      messageChannel(parent->messageChannel),
      messageChannel2(parent->messageChannel2),
      messageChannelOwned(false),
      messageChannel2Owned(false),
      messageTable(new MessageTable()) {}

MessageHandler*& MessageHandler::singletonSlot() {
  // Constant-initialised, so it is zero before any static initialiser of the
  // library runs, whatever their order.
  static MessageHandler* slot = nullptr;
  return slot;
}

MessageHandler* MessageHandler::object() {
  MessageHandler*& slot = singletonSlot();
  if (slot == nullptr) {
    slot = new MessageHandler();
  }
  return slot;
}

MessageHandler::~MessageHandler() {
  if (messageChannel != nullptr && messageChannelOwned) {
    delete messageChannel;
  }
  if (messageChannel2 != nullptr && messageChannel2Owned) {
    delete messageChannel2;
  }
  delete messageTable;
  // Only now, with no table left to link them, may borrowed entries go.
  delete compiledCatalogues;
}

void MessageHandler::setSeverityLevel(SeverityLevel level) {
  severityLevel = level;
}

SeverityLevel MessageHandler::getSeverityLevel() const {
  return severityLevel;
}

void MessageHandler::setLanguageList(LanguageList list) {
  languageList = list;
}

LanguageList MessageHandler::getLanguageList() const {
  return languageList;
}

void MessageHandler::setMessageChannel(MessageChannel* channel, bool owned) {
  if (messageChannel != nullptr && messageChannelOwned) {
    delete messageChannel;
  }
  messageChannel = channel;
  messageChannelOwned = owned;
}

const MessageChannel* MessageHandler::getMessageChannel() const {
  return messageChannel;
}

bool MessageHandler::getMessageChannelOwnership() const {
  return messageChannelOwned;
}

void MessageHandler::setMessageChannel2(MessageChannel* channel, bool owned) {
  if (messageChannel2 != nullptr && messageChannel2Owned) {
    delete messageChannel2;
  }
  messageChannel2 = channel;
  messageChannel2Owned = owned;
}

const MessageChannel* MessageHandler::getMessageChannel2() const {
  return messageChannel2;
}

bool MessageHandler::getMessageChannel2Ownership() const {
  return messageChannel2Owned;
}

Message* MessageHandler::getMessage(const char* nameSpace, const char* identifier) const {
  const MessageTable::Choice choice =
      findBestOf(*messageTable, compiledCatalogues, nameSpace, identifier, languageList);
  if (choice.entry != nullptr) {
    // Only this handler counts once it has an acceptable entry, even if the
    // parent offers a better-ranked language.
    return new Message(choice.entry, choice.text, static_cast<SeverityLevel>(choice.severity),
                       choice.language, choice.forms);
  }
  if (choice.found()) {
    // A text of a catalogue read in place: the record borrows its key from
    // the mapped file.
    Message* record = new Message(choice.nameSpace, choice.identifier,
                                  static_cast<SeverityLevel>(choice.severity), choice.language,
                                  choice.text, false);
    record->forms = choice.forms;
    return record;
  }
  if (parent == nullptr) {
    return nullptr;
  }
  // The parent ranks by its own language list.
  return parent->getMessage(nameSpace, identifier);
}

Message* MessageHandler::getMessageNotFound() const {
  return getMessage("msg", "notfound");
}

void MessageHandler::writeMessage(Message& message) {
  if (message.getSeverityLevel() < severityLevel) {
    return;
  }
  if (messageChannel != nullptr) {
    messageChannel->onMessage(message);
  }
  if (messageChannel2 != nullptr) {
    messageChannel2->onMessage(message);
  }
}

void MessageHandler::writeMessage1(Message& message, const char* arg0) {
  const char* args[] = {arg0};
  writeMessageN(message, 1, args);
}

void MessageHandler::writeMessage2(Message& message, const char* arg0, const char* arg1) {
  const char* args[] = {arg0, arg1};
  writeMessageN(message, 2, args);
}

void MessageHandler::writeMessage3(Message& message, const char* arg0, const char* arg1,
                                   const char* arg2) {
  const char* args[] = {arg0, arg1, arg2};
  writeMessageN(message, 3, args);
}

void MessageHandler::writeMessage4(Message& message, const char* arg0, const char* arg1,
                                   const char* arg2, const char* arg3) {
  const char* args[] = {arg0, arg1, arg2, arg3};
  writeMessageN(message, 4, args);
}

void MessageHandler::writeMessageN(Message& message, unsigned int count, const char* args[]) {
  message.clear();
  // A plural record takes its count first, which chooses the variant the
  // other arguments go into.
  const unsigned int countPlaceholder = message.isPlural() ? message.getCountPlaceholder() : count;
  if (countPlaceholder < count) {
    message.substitute(countPlaceholder, args[countPlaceholder]);
  }
  for (unsigned int i = 0; i < count; ++i) {
    // An argument without a placeholder is no error.
    if (i != countPlaceholder) {
      message.substitute(i, args[i]);
    }
  }
  // Substitution happens even for a record that the threshold then holds back.
  writeMessage(message);
}

void MessageHandler::addEntry(MTE* entry, bool throwOnDuplicate) {
  addEntry(entry, throwOnDuplicate, IndexKey(entry->nameSpace, entry->identifier));
}

void MessageHandler::addEntry(MTE* entry, bool throwOnDuplicate, const IndexKey& key) {
  // count / size > 50 in integer division, without the division: the same
  // as count >= 51 * size.
  if (messageTable->getCount() >=
      std::uint64_t{kMaxAverageChainLength + 1} * messageTable->getSize()) {
    MessageTable* grown = messageTable->grownCopy();
    delete messageTable;  // empty now: deleting it touches no entry
    messageTable = grown;
  }
  // Most additions bring a new key or language. The chain is walked only
  // for a duplicate, whose place in it the replacement needs.
  MTE* predecessor = nullptr;
  MTE* existing = nullptr;
  if (messageTable->holdsEntryLike(entry, key)) {
    existing = messageTable->findEntry(entry, &predecessor);
  }
  if (existing != nullptr && throwOnDuplicate) {
    throw MessageExists(entry->getNamespace(), entry->getIdentifier());
  }
  if (compiledCatalogues == nullptr || compiledCatalogues->inPlaceCount() == 0) {
    messageTable->insertEntry(entry, existing, predecessor, key);
    return;
  }
  // Beside catalogues read in place, a lookup needs to know when the entry
  // came (see CompiledCatalogueStorage).
  compiledCatalogues->stamp(entry, existing);
  try {
    messageTable->insertEntry(entry, existing, predecessor, key);
  } catch (...) {
    compiledCatalogues->unstamp(entry);
    throw;
  }
  if (existing != nullptr) {
    compiledCatalogues->forgetReplaced(existing);
  }
}

void MessageHandler::addEntries(MTE* first, std::uint32_t count, const IndexKey& key) {
  // In one step only if no growth test on the way would grow the table.
  const std::uint64_t growthPoint =
      std::uint64_t{kMaxAverageChainLength + 1} * messageTable->getSize();
  const bool stamped = compiledCatalogues != nullptr && compiledCatalogues->inPlaceCount() > 0;
  if (!stamped && std::uint64_t{messageTable->getCount()} + count <= growthPoint &&
      messageTable->insertNewKey(first, count, key)) {
    return;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    addEntry(first + i, false, key);
  }
}

void MessageHandler::noteOwnedEntry(const MTE* entry) {
  messageTable->noteOwnedEntry(entry);
}

}  // namespace msg
