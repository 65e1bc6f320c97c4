// MessageChannel: where a handler sends the messages that pass its threshold.

#ifndef MSG_MESSAGECHANNEL_H_
#define MSG_MESSAGECHANNEL_H_

#include "msg/export.h"

namespace msg {

class Message;
class MessageHandler;

// Output interface. Derive from it and override onMessage to send messages
// elsewhere. The base class itself is the library's default output: one line
// per message on std::cerr, "namespace:identifier: text".
//
// A handler calls onMessage; whether the handler deletes the channel depends
// on the `owned` flag given to MessageHandler::setMessageChannel.
//
// Thread safety: threads that write through one handler call its channels
// at the same time, so an override of onMessage must be safe for that (or
// lock). The default output is: it writes each record as one line, put
// together first and handed to std::cerr in a single write, so lines of
// different threads interleave whole and never tear within a line (with
// std::cerr synchronised with stdio, the default).
class MSG_EXPORT MessageChannel {
 public:
  // The base class holds nothing: channels are made, copied and assigned
  // as their derived classes allow.
  MessageChannel() = default;
  MessageChannel(const MessageChannel&) = default;
  MessageChannel& operator=(const MessageChannel&) = default;
  virtual ~MessageChannel();

 protected:
  friend class MessageHandler;

  // Writes one record: the namespace, ":", the identifier, ": ", the text as
  // message.getMessage() shows it, and a line feed, to std::cerr. A null
  // piece writes nothing for that piece. Severity and language are not shown.
  virtual void onMessage(const Message& message);
};

}  // namespace msg

#endif  // MSG_MESSAGECHANNEL_H_
