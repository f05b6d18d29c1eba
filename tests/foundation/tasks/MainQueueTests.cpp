#include "tavlen/foundation/tasks/MainQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

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

TEST(MainQueue, IsSerialWhateverThreadsAddAndDrain) {
  MainQueue queue;
  constexpr int kPieces = 200;
  int ran = 0;  // no atomic: that work never overlaps is what is tested
  const auto adder = [&] {
    for (int i = 0; i < kPieces; ++i) queue.async([&] { ++ran; });
  };
  std::atomic<bool> isOver = false;
  std::thread drainer([&] {
    while (!isOver) queue.waitAndDrain(milliseconds(1));
  });
  std::thread adders[] = {std::thread(adder), std::thread(adder)};
  for (std::thread& thread : adders) thread.join();
  while (queue.drain() > 0) {
  }
  isOver = true;
  drainer.join();
  queue.drain();
  EXPECT_EQ(ran, 2 * kPieces);
}

}  // namespace
}  // namespace tavlen
