#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <deque>
#include <future>
#include <stdexcept>
#include <system_error>

#include "tavlen/foundation/tasks/DatagramReceiver.h"
#include "tavlen/foundation/tasks/MainQueue.h"
#include "tavlen/foundation/tasks/MainRunLoop.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"
#include "tavlen/foundation/tasks/SerialQueue.h"
#include "tests/support/LogLines.h"
#include "tests/support/Threads.h"
#include "tests/support/UDPSender.h"

namespace tavlen {
namespace {

using std::chrono::milliseconds;

TEST(MainQueue, RunsWhatWasThereInOrder) {
  MainQueue queue;
  std::string ran;
  queue.async([&] {
    ran += '1';
    queue.async([&] { ran += '3'; });  // for the next time
    EXPECT_EQ(queue.drain(), 0U);      // serial: not inside of work
  });
  queue.async([&] { ran += '2'; });
  EXPECT_EQ(queue.drain(), 2U);
  EXPECT_EQ(ran, "12");
  EXPECT_EQ(queue.waitAndDrain(milliseconds::max()), 1U);  // which does not wait
  EXPECT_EQ(ran, "123");
  EXPECT_EQ(queue.waitAndDrain(milliseconds(1)), 0U);
}

TEST(MainQueue, StaysUsableWhenWorkThrows) {
  MainQueue queue;
  bool ran = false;
  queue.async([] { throw 1; });
  queue.async([&] { ran = true; });
  EXPECT_THROW(queue.drain(), int);
  EXPECT_FALSE(ran);
  EXPECT_EQ(queue.drain(), 1U);
  EXPECT_TRUE(ran);
}

TEST(MainQueue, TellsItsHostOfAdditions) {
  MainQueue queue;
  int additions = 0;
  queue.setWorkAddedHandler([&] {
    ++additions;
    queue.drain();  // no lock is held
  });
  auto held = std::shared_ptr<void>(nullptr, [&](void*) { queue.async([] {}); });
  queue.async([held = std::move(held)] {});  // adds when it is destroyed
  EXPECT_EQ(additions, 2);
  queue.setWorkAddedHandler({});
  queue.async([] {});
  EXPECT_EQ(additions, 2);
}

TEST(MainQueue, IsDrainedByARunLoop) {
  MainQueue queue;
  std::string ran;
  queue.async([&] { ran += '1'; });  // before the loop knows it
  std::deque<std::function<void()>> loop;
  const auto runLoop = [&] {
    while (!loop.empty()) {
      const auto work = std::move(loop.front());
      loop.pop_front();
      work();
    }
  };
  drainInRunLoop(queue, [&](std::function<void()> work) { loop.push_back(std::move(work)); });
  EXPECT_EQ(ran, "") << "not on the loop";
  queue.async([&] {
    queue.async([&] { ran += '2'; });
    runLoop();  // within work, where the addition stays
    EXPECT_EQ(ran, "1");
    throw std::runtime_error("broken");
  });
  const LogLines log;
  runLoop();
  EXPECT_EQ(ran, "12");
  EXPECT_EQ(log.count("broken"), 1);
}

TEST(MainQueue, IsSerialWhateverThreadsAddAndDrain) {
  MainQueue queue;
  constexpr int kPieces = 200;
  int ran = 0;  // no atomic: that work never overlaps is what is tested
  const auto adder = [&](int) {
    for (int i = 0; i < kPieces; ++i) queue.async([&] { ++ran; });
  };
  std::atomic<bool> isOver = false;
  std::thread drainer([&] {
    while (!isOver) queue.waitAndDrain(milliseconds(1));
  });
  inThreads(2, adder);
  while (queue.drain() > 0) {
  }
  isOver = true;
  drainer.join();
  queue.drain();
  EXPECT_EQ(ran, 2 * kPieces);
}

TEST(SerialQueue, RunsPieceAfterPieceOnItsThread) {
  std::string ran;
  {
    SerialQueue queue("dev.tavlen.test-queue");
    EXPECT_FALSE(queue.isCurrent());
    queue.async([&] { ran += '1'; });
    queue.sync([&] {
      ran += '2';
      queue.async([&] { ran += queue.isCurrent() ? '3' : 'x'; });
    });
    EXPECT_THROW(queue.sync([] { throw std::runtime_error("passes"); }), std::runtime_error);
    queue.async([&] { ran += '4'; });
  }  // waits for what was added
  EXPECT_EQ(ran, "1234");
}

TEST(SerialQueue, IsSerialWhateverThreadsAdd) {
  constexpr int kPieces = 200;
  int ran = 0;  // no atomic: that work never overlaps is what is tested
  {
    SerialQueue queue("test");
    inThreads(2, [&](int) {
      for (int i = 0; i < kPieces; i += 2) {
        queue.async([&] { ++ran; });
        queue.sync([&] { ++ran; });
      }
    });
  }
  EXPECT_EQ(ran, 2 * kPieces);
}

TEST(SerialQueueDeathTest, WaitsNotForItself) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto wait = [] {
    SerialQueue queue("the-label");
    queue.sync([&] { queue.sync([] {}); });
  };
  EXPECT_DEATH(wait(), "the-label");
}

TEST(NotificationCenter, CallsMatchingObserversInTheOrderOfRegistration) {
  NotificationCenter center;
  const int a = 0;
  const int b = 0;
  std::string called;
  const auto note = [&](char mark) {
    return [&called, mark](const Notification&) { called += mark; };
  };
  center.addObserver("N", nullptr, note('1'));
  center.addObserver(std::nullopt, nullptr, note('2'));
  center.addObserver("N", &a, note('3'));
  center.addObserver(std::nullopt, &a, note('4'));
  center.addObserver("M", nullptr, note('5'));
  center.addObserver("N", nullptr, note('6'));
  const std::pair<Notification, std::string> rows[] = {
      {{"N", nullptr, {}}, "126"}, {{"N", &a, {}}, "12346"}, {{"N", &b, {}}, "126"},
      {{"M", &a, {}}, "245"},      {{"", nullptr, {}}, "2"},
  };
  for (const auto& [posted, expected] : rows) {
    called.clear();
    center.post(posted);
    EXPECT_EQ(called, expected);
  }
}

TEST(NotificationCenter, LetsHandlersChangeTheListAndPost) {
  NotificationCenter center;
  std::string called;
  NotificationCenter::Token second{};
  const NotificationCenter::Token first =
      center.addObserver("N", nullptr, [&](const Notification& notification) {
        called += '1';
        const bool isNested = notification.userInfo.has_value();
        if (isNested) return;
        center.removeObserver(first);  // the one that runs
        center.removeObserver(second);
        center.addObserver("N", nullptr, [&](const Notification&) { called += '3'; });
        center.post({"N", nullptr, std::map<std::string, std::any>{{"nested", true}}});
      });
  second = center.addObserver("N", nullptr, [&](const Notification&) { called += '2'; });
  center.post({"N", nullptr, {}});
  EXPECT_EQ(called, "13");  // the new one by the nested post only
  center.removeObserver(second);
  center.post({"N", nullptr, {}});
  EXPECT_EQ(called, "133");
}

TEST(NotificationCenter, ReleasesHandlersWithoutItsLockAndPassesExceptionsOn) {
  NotificationCenter center;
  bool posted = false;
  center.addObserver("released", nullptr, [&](const Notification&) { posted = true; });
  auto onRelease = std::shared_ptr<void>(nullptr, [&](void*) {
    center.post({"released", nullptr, {}});
  });
  const auto token = center.addObserver(
      "N", nullptr, [held = std::move(onRelease)](const Notification&) { throw 1; });
  EXPECT_THROW(center.post({"N", nullptr, {}}), int);
  center.removeObserver(token);
  EXPECT_TRUE(posted);
}

TEST(NotificationCenter, MayBeUsedByManyThreads) {
  NotificationCenter center;
  std::atomic<int> count = 0;
  center.addObserver("N", nullptr, [&](const Notification&) { ++count; });
  inThreads(3, [&](int) {
    for (int i = 0; i < 300; ++i) {
      const auto token = center.addObserver("N", nullptr, [](const Notification&) {});
      center.post({"N", nullptr, {}});
      center.removeObserver(token);
    }
  });
  EXPECT_EQ(count, 900);
}

bool posts(NotificationPoster& poster) {
  bool ran = false;
  poster.performNotificationPostingOperation([&] { ran = true; });
  return ran;
}

TEST(NotificationPoster, DropsWhatIsPostedInSilence) {
  NotificationPoster poster;
  EXPECT_TRUE(posts(poster));
  poster.performWithoutNotifications([&] {
    poster.performWithoutNotifications([&] { EXPECT_FALSE(posts(poster)); });
    EXPECT_FALSE(posts(poster)) << "the inner call ended the outer one's silence";
  });
  EXPECT_TRUE(posts(poster));
  EXPECT_THROW(poster.performWithoutNotifications([] { throw 1; }), int);
  EXPECT_TRUE(posts(poster));
  std::thread([&] { EXPECT_TRUE(posts(poster)); }).join();
}

TEST(NotificationPoster, SerialisesBodiesOfAllThreads) {
  NotificationPoster poster;
  int silent = 0;  // no atomics: the lock is what is tested
  int posted = 0;
  inThreads(3, [&](int) {
    for (int i = 0; i < 300; ++i) {
      poster.performWithoutNotifications([&] { ++silent; });
      poster.performNotificationPostingOperation([&] { ++posted; });
    }
  });
  EXPECT_EQ(silent, 900);
  EXPECT_EQ(posted, 900);
}

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
