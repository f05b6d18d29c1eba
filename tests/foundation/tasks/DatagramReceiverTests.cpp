#include "tavlen/foundation/tasks/DatagramReceiver.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <future>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/UDPSender.h"

namespace tavlen {
namespace {

struct Descriptors {
  int open = 0;
  int inherited = 0;  ///< by programs that this one starts
};

Descriptors descriptors() {
  Descriptors count;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++count.open;
    const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFD);
    if ((flags & FD_CLOEXEC) == 0) ++count.inherited;
  }
  return count;
}

TEST(DatagramReceiver, GivesWhatCameAndNoMore) {
  DatagramReceiver receiver(0);
  for (const std::string& bytes : {std::string("abcdefgh"), std::string(), std::string("xy"),
                                   std::string(40, 'z'), std::string("end")}) {
    ASSERT_TRUE(sendDatagram(receiver.port(), bytes));
  }
  std::vector<std::string> received;
  receiver.receive(16, [&](std::string_view bytes) {
    received.emplace_back(bytes);
    return bytes != "end";
  });
  EXPECT_THAT(received, testing::ElementsAre("abcdefgh", "", "xy", "zzzzzzzzzzzzzzzz", "end"));
  EXPECT_FALSE(receiver.isClosed());
}

TEST(DatagramReceiver, RefusesAPortThatIsTaken) {
  const int inherited = descriptors().inherited;
  DatagramReceiver first(0);
  EXPECT_EQ(descriptors().inherited, inherited);
  EXPECT_THROW(DatagramReceiver second(first.port()), std::system_error);
  first.close();
  EXPECT_NO_THROW(DatagramReceiver second(first.port()));
}

TEST(DatagramReceiver, IsClosedFromOtherThreads) {
  const int before = descriptors().open;
  std::uint16_t port = 0;
  for (int round = 0; round < 50; ++round) {
    DatagramReceiver receiver(port);
    port = receiver.port();  // free again at once
    std::promise<void> begun;
    auto loop = std::async(std::launch::async, [&] {
      receiver.receive(8, [&](std::string_view) {
        begun.set_value();
        return true;
      });
    });
    // Sometimes before the loop begins, sometimes while it sleeps.
    if (round % 2 == 0) {
      ASSERT_TRUE(sendDatagram(port, "x"));
      begun.get_future().wait();
    }
    auto other = std::async(std::launch::async, [&] { receiver.close(); });
    receiver.close();
    EXPECT_TRUE(receiver.isClosed());
    EXPECT_NO_THROW(DatagramReceiver next(port));
    ASSERT_EQ(loop.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    other.get();
    receiver.receive(8, [](std::string_view) { return true; });  // returns at once
  }
  EXPECT_EQ(descriptors().open, before);
}

TEST(DatagramReceiver, IsClosedByItsHandler) {
  DatagramReceiver receiver(0);
  ASSERT_TRUE(sendDatagram(receiver.port(), "1"));
  ASSERT_TRUE(sendDatagram(receiver.port(), "2"));
  int calls = 0;
  std::future<void> other;
  receiver.receive(8, [&](std::string_view) {
    ++calls;
    // One that waits for this handler does not keep it from closing.
    other = std::async(std::launch::async, [&] { receiver.close(); });
    while (!receiver.isClosed()) std::this_thread::yield();
    receiver.close();
    return true;
  });
  EXPECT_EQ(calls, 1);
  EXPECT_NO_THROW(DatagramReceiver next(receiver.port()));
  other.get();
}

TEST(DatagramReceiver, LetsItsHandlerThrow) {
  DatagramReceiver receiver(0);
  ASSERT_TRUE(sendDatagram(receiver.port(), "1"));
  EXPECT_THROW(receiver.receive(8, [](std::string_view) -> bool { throw 1; }), int);
  receiver.close();  // waits for nobody
  EXPECT_NO_THROW(DatagramReceiver next(receiver.port()));
}

}  // namespace
}  // namespace tavlen
