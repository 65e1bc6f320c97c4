#include "msg/SyslogMessageChannel.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <string>
#include <utility>
#include <vector>

#include "msg/Message.h"

namespace msg {
namespace {

class KeptSyslogChannel : public SyslogMessageChannel {
 public:
  using SyslogMessageChannel::SyslogMessageChannel;
  void send(int priority, const std::string& text) override { sent.emplace_back(priority, text); }
  std::vector<std::pair<int, std::string>> sent;
};

TEST(SyslogChannelTest, SendsKeyAndTextAtTheSeverityPriority) {
  KeptSyslogChannel channel(LOG_LOCAL3);
  for (SeverityLevel severity : {info, warning, error, abort}) {
    channel.onMessage(Message("app", "disk", severity, "en", "100% full"));
  }
  channel.onMessage(Message("", nullptr, static_cast<SeverityLevel>(7), "en", "z"));
  const std::vector<std::pair<int, std::string>> expected = {
      {LOG_LOCAL3 | LOG_INFO, "app:disk: 100% full"},
      {LOG_LOCAL3 | LOG_WARNING, "app:disk: 100% full"},
      {LOG_LOCAL3 | LOG_ERR, "app:disk: 100% full"},
      {LOG_LOCAL3 | LOG_CRIT, "app:disk: 100% full"},
      {LOG_LOCAL3 | LOG_CRIT, ":: z"},
  };
  EXPECT_EQ(channel.sent, expected);
  EXPECT_EQ(KeptSyslogChannel().getFacility(), LOG_USER);
}

}  // namespace
}  // namespace msg
