#include "tavlen/foundation/tasks/SerialQueue.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace tavlen {
namespace {

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
    const auto add = [&] {
      for (int i = 0; i < kPieces; ++i) {
        if (i % 2 == 0)
          queue.async([&] { ++ran; });
        else
          queue.sync([&] { ++ran; });
      }
    };
    std::thread adders[] = {std::thread(add), std::thread(add)};
    for (std::thread& thread : adders) thread.join();
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

}  // namespace
}  // namespace tavlen
