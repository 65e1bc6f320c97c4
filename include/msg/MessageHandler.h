// MessageHandler: turns keys into messages and messages into output.

#ifndef MSG_MESSAGEHANDLER_H_
#define MSG_MESSAGEHANDLER_H_

#include "msg/LanguageList.h"
#include "msg/SeverityLevel.h"
#include "msg/export.h"

namespace msg {

class CompiledCatalogueStorage;
struct IndexKey;
class MTE;
class Message;
class MessageChannel;
class MessageTable;

// The centre of the library. A handler owns one catalogue (its message
// table), the list of languages its reader accepts, a severity threshold and
// up to two output channels. getMessage() turns a key into a Message in the
// best language on offer; writeMessage() hands a record that is severe
// enough to the channels.
//
// Most applications use the one process-wide handler of object(). A handler
// built on a parent has its own table and asks the parent for what that
// table lacks; the parent, and channels it shares with the child, must
// outlive the child.
//
// Ownership: the handler owns its table (and every entry made with copied
// strings) and each channel passed with `owned` true. It never owns its
// parent.
//
// Compiled catalogues (loadCompiledCatalogue) add one
// owner more, held by the handler beside its table:
//
//   what                               owned by       released
//   the read-only mapping of the file  the handler    ~MessageHandler, after the table
//   the variants of its plural texts   the handler    ~MessageHandler, after the table
//   (made at their first lookup)
//   the strings of its texts           the mapping    with the mapping
//
// A file with a key index (what msgtool writes) is read in place: nothing is
// registered in the table, and lookups read the file's own index. A file of
// an older format without one is registered as entries (one block per load,
// also owned by the handler and released after the table) linked with
// ownsStrings false. Either way a text that a later load or registration
// replaces stays valid until the handler dies, as do the strings of every
// record made from it. Each load keeps its file mapped until then, also
// when all of its texts have been replaced.
//
// Thread safety: the handler takes no lock. Everything that changes it
// (setters, entries added to its table, loads) needs the handler to itself.
// Once configured and loaded, any number of threads may call getMessage(),
// getMessageNotFound() and the writeMessage family at the same time, each
// with records of its own, as long as no thread changes the handler
// meanwhile; its channels are then called from all of those threads (see
// MessageChannel).
class MSG_EXPORT MessageHandler {
 public:
  // Root handler: threshold info, language list ["en"], a default
  // MessageChannel of its own as the first channel, no second channel and an
  // empty table.
  MessageHandler();

  // Child handler: copies the parent's threshold and language list as they
  // stand now, shares (does not own) its two channels, and starts with an
  // empty table. Later changes to either handler are not seen by the other.
  // REQUIRES: parent is not null and outlives this handler.
  explicit MessageHandler(const MessageHandler* parent);

  MessageHandler(const MessageHandler&) = delete;
  MessageHandler& operator=(const MessageHandler&) = delete;

  // The process-wide handler, created on first use (by the library itself
  // while it loads). It is never destroyed; do not delete it.
  static MessageHandler* object();

  // Deletes the owned channels and the table with its owned entries. The
  // parent is left alone.
  virtual ~MessageHandler();

  // Records below `level` are not written; records at or above it are.
  virtual void setSeverityLevel(SeverityLevel level);
  virtual SeverityLevel getSeverityLevel() const;

  // The accepted languages, best first (a deep copy either way).
  virtual void setLanguageList(LanguageList list);
  virtual LanguageList getLanguageList() const;

  // Replaces the first channel, deleting the old one if it was owned. A null
  // channel switches this output off. With `owned` true the handler deletes
  // the channel later; it must then have been made with `new`.
  // REQUIRES: channel is not the channel the handler already owns.
  virtual void setMessageChannel(MessageChannel* channel, bool owned);
  virtual const MessageChannel* getMessageChannel() const;
  virtual bool getMessageChannelOwnership() const;

  // The same for the second channel.
  virtual void setMessageChannel2(MessageChannel* channel, bool owned);
  virtual const MessageChannel* getMessageChannel2() const;
  virtual bool getMessageChannel2Ownership() const;

  // A new record of the key in the language this handler's list ranks best,
  // or, if this table has no acceptable entry, what the parent gives; null
  // if nobody has one. The caller owns the record (delete it); it borrows the
  // entry's strings.
  // REQUIRES: nameSpace and identifier are not null.
  virtual Message* getMessage(const char* nameSpace, const char* identifier) const;

  // getMessage("msg", "notfound"), placeholders unfilled; null if no
  // acceptable language has it.
  virtual Message* getMessageNotFound() const;

  // Hands `message` to the first and then the second channel, unless its
  // severity is below the threshold. Substitutes nothing.
  virtual void writeMessage(Message& message);

  // Clear the record, fill &0, &1, ... with the arguments in order, then
  // writeMessage(). Arguments without a placeholder are ignored.
  virtual void writeMessage1(Message& message, const char* arg0);
  virtual void writeMessage2(Message& message, const char* arg0, const char* arg1);
  virtual void writeMessage3(Message& message, const char* arg0, const char* arg1,
                             const char* arg2);
  virtual void writeMessage4(Message& message, const char* arg0, const char* arg1, const char* arg2,
                             const char* arg3);
  virtual void writeMessageN(Message& message, unsigned int count, const char* args[]);

  // The handler asked when this one has no acceptable entry; null for a root.
  const MessageHandler* getParent() const { return parent; }

  // Maps the compiled catalogue `path` (written by `msgtool compile` or the
  // CMake function msg_compile_catalogue, format in
  // docs/compiled-catalogues.md) read-only, and from then on answers from
  // each text whose language this handler's list accepts, as if each had
  // been registered at the load, in file order. The list must stand before
  // the load: texts in other languages are left out and a later list does
  // not bring them back. A text of the same key (namespace, identifier,
  // language) in this handler's table or an earlier catalogue is replaced
  // without complaint; the parent's entries are left alone. Texts stay in
  // the mapping; nothing is copied per string, and a file with a key index
  // costs no heap per text. The handler keeps the mapping until it dies
  // (see Ownership above).
  //
  // Needs no XML: a program that only loads compiled catalogues can do so on
  // a plain handler, and the library's XML system is never started for it.
  // MessageHandlerX::loadCompiledCatalogue does the same.
  //
  // The file may come from anywhere. A file that cannot be opened or mapped,
  // is no regular file, is empty, truncated, of another magic or a newer
  // format version, has a header or section out of range or changes while
  // it is checked, is refused; so is a file without a key index that fails
  // its checksum or holds an offset, length, count, severity or language
  // tag out of range (it is checked whole, in time proportional to its
  // size). A file with a key index is checked at the load in constant time,
  // and each index slot, text and variant record when a lookup first reads
  // it: one that is damaged is passed over, as if the file did not hold it,
  // and nothing outside the mapping is ever read. A refusal: report "msgx",
  // "MessageDocumentError" through this handler's channels with the path as
  // &0, then ErrorInMessageDocument with the text
  //   Message document "<path>" contains syntactical error.
  // whose getProblems() says what is wrong; the handler is untouched. If
  // neither the report's key nor the not-found text is in an acceptable
  // language, the Message constructor's MessageNotFound leaves instead.
  //
  // Replace a compiled catalogue by writing a new file and renaming it over
  // the old one (as msgtool does): a handler that has the old file mapped
  // keeps reading the old contents. Truncating or rewriting the file in
  // place while a handler has it mapped is not supported; reading a page
  // that truncation removed stops the process with SIGBUS.
  // REQUIRES: path is not null; nothing else uses the handler meanwhile.
  void loadCompiledCatalogue(const char* path);

 protected:
  // For handlers that stack themselves in front of another (MessageHandlerX).
  void setParent(const MessageHandler* newParent) { parent = newParent; }

  // The process-wide slot behind object(); zero until first used.
  static MessageHandler*& singletonSlot();

  // The table of `handler`, for derived handlers and the library's own tests.
  // MessageTable is private to the library; outside it this is opaque.
  static MessageTable* messageTableOf(const MessageHandler& handler) {
    return handler.messageTable;
  }

 private:
  friend class MTE;
  friend class PluralMTE;  // attaches the variants of the entry it links
  friend class CompiledCatalogueLoader;

  // Links `entry` into the table, growing the table first if its chains
  // have become long. Throws MessageExists for a duplicate if
  // `throwOnDuplicate`, otherwise replaces the duplicate in its place.
  void addEntry(MTE* entry, bool throwOnDuplicate);
  // The same with the entry's key worked out by the caller, who links many
  // entries of one key: `key` is IndexKey(entry's namespace, identifier).
  void addEntry(MTE* entry, bool throwOnDuplicate, const IndexKey& key);
  // Links the `count` unlinked entries at `first`, all of `key`, as count
  // calls of addEntry(entry, false, key) in array order would.
  void addEntries(MTE* first, std::uint32_t count, const IndexKey& key);

  // Tells the table that `entry`, linked by addEntry, has taken ownership of
  // its strings (and now points at its copies), and so belongs to the table
  // from now on.
  void noteOwnedEntry(const MTE* entry);

  // Reads the table directly when a record is made by key from a plain
  // handler, instead of through a temporary record.
  friend class Message;

  const MessageHandler* parent;
  SeverityLevel severityLevel;
  LanguageList languageList;
  MessageChannel* messageChannel;
  MessageChannel* messageChannel2;
  bool messageChannelOwned;
  bool messageChannel2Owned;
  MessageTable* messageTable;  // owned, never null after construction
  // Mappings and entry blocks of compiled catalogues; owned, null until the
  // first one is loaded.
  CompiledCatalogueStorage* compiledCatalogues = nullptr;
};

}  // namespace msg

#endif  // MSG_MESSAGEHANDLER_H_
