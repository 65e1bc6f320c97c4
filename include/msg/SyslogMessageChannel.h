// SyslogMessageChannel: messages to the system log through syslog(3).

#ifndef MSG_SYSLOGMESSAGECHANNEL_H_
#define MSG_SYSLOGMESSAGECHANNEL_H_

#include <string>

#include "msg/MessageChannel.h"
#include "msg/SeverityLevel.h"
#include "msg/export.h"

namespace msg {

// An output channel that hands each message to syslog(3), one entry per
// message, with the text the default channel writes (without its line feed):
// "namespace:identifier: text". The text is passed as an argument, never as
// the format, so a "%" in it is written as it stands.
//
// Priority: the facility ORed with the level of the record's severity:
//   info -> LOG_INFO, warning -> LOG_WARNING, error -> LOG_ERR,
//   abort -> LOG_CRIT (a value above abort as abort, below info as info).
//
// Facility and ident: the facility is one of the LOG_* facility values of
// <syslog.h> (LOG_USER by default; this header does not include <syslog.h>,
// whose macros would reach every file that includes msg/msg.h). With an
// ident, the constructor calls openlog(ident, LOG_PID, facility) and the
// destructor closelog(); syslog keeps one ident per process, so give an
// ident to one channel only. Without one, the process's setting (by default
// the program name) stands.
//
// Tests: derive and override send() to see what would go to syslog without
// a syslog daemon.
//
// Thread safety: syslog(3) may be called from several threads, and
// onMessage() keeps no state in the channel.
class MSG_EXPORT SyslogMessageChannel : public MessageChannel {
 public:
  // LOG_USER, from <syslog.h>.
  static constexpr int userFacility = 1 << 3;

  // Facility `facility`; the process's ident.
  explicit SyslogMessageChannel(int facility = userFacility);

  // Facility `facility` and ident `ident` (copied; null or "" keeps the
  // process's ident and calls no openlog()).
  SyslogMessageChannel(const char* ident, int facility);

  SyslogMessageChannel(const SyslogMessageChannel&) = delete;
  SyslogMessageChannel& operator=(const SyslogMessageChannel&) = delete;
  ~SyslogMessageChannel() override;

  // The facility given to the constructor.
  int getFacility() const { return facility; }

  // The ident given to openlog(); "" if none was given.
  const std::string& getIdent() const { return ident; }

  // The syslog level (LOG_INFO ...) of `severity`, without the facility.
  static int levelOf(SeverityLevel severity);

  // Sends the entry of `message` with send().
  void onMessage(const Message& message) override;

 protected:
  // Hands one entry to syslog(3): `priority` is facility | level, `text` the
  // whole entry. Override in tests.
  virtual void send(int priority, const std::string& text);

 private:
  int facility;
  std::string ident;  // openlog() keeps a pointer to it
};

}  // namespace msg

#endif  // MSG_SYSLOGMESSAGECHANNEL_H_
