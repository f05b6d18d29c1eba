#include "tavlen/foundation/text/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavlen {
namespace {

TEST(Log, GoesToOneSinkAtATime) {
  std::vector<std::string> messages;
  setLogSink([&](std::string_view message) {
    messages.emplace_back(message);
    if (message == "outer") logMessage("inner");  // no lock is held
  });
  logMessage("outer");
  EXPECT_EQ(messages, (std::vector<std::string>{"outer", "inner"}));
  setLogSink({});
  testing::internal::CaptureStderr();
  logMessage("a\nb\x1B[0m\x7F caf\xC3\xA9\xC2\x9B");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\\nb\\x1b[0m\\x7f caf\xC3\xA9\\u009b\n");
  EXPECT_EQ(messages.size(), 2U);
}

}  // namespace
}  // namespace tavlen
