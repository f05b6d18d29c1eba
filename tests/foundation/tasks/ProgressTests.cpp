#include "tavlen/foundation/tasks/Progress.h"

#include <gtest/gtest.h>

#include <future>
#include <limits>
#include <string>

#include "tests/support/Threads.h"

namespace tavlen {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

TEST(Progress, TellsItsFractionByItsCounts) {
  const struct {
    std::int64_t total, completed;
    double fraction;
    bool isIndeterminate, isFinished;
  } rows[] = {
      {100, 0, 0, false, false},    {100, 25, 0.25, false, false}, {100, 100, 1, false, true},
      {100, 150, 1.5, false, true}, {0, 0, 0, true, false},        {0, 1, 1, false, true},
      {-1, 1, 0, true, false},      {100, -1, 0, true, false},     {kMost, kMost, 1, false, true}};
  for (const auto& row : rows) {
    const auto progress = Progress::discrete(row.total);
    progress->setCompletedUnitCount(row.completed);
    SCOPED_TRACE(std::to_string(row.completed) + " of " + std::to_string(row.total));
    EXPECT_DOUBLE_EQ(progress->fractionCompleted(), row.fraction);
    EXPECT_EQ(progress->isIndeterminate(), row.isIndeterminate);
    EXPECT_EQ(progress->isFinished(), row.isFinished);
  }
}

TEST(Progress, HoldsTheSharesOfItsChildren) {
  const auto parent = Progress::discrete(100);
  const auto child = Progress::discrete(100);
  parent->addChild(child, 10);
  child->setCompletedUnitCount(50);
  EXPECT_DOUBLE_EQ(parent->fractionCompleted(), 0.05);
  EXPECT_EQ(parent->completedUnitCount(), 0);
  child->setCompletedUnitCount(-1);
  EXPECT_EQ(parent->fractionCompleted(), 0);
  child->setCompletedUnitCount(100);
  EXPECT_DOUBLE_EQ(parent->fractionCompleted(), 0.10);
  EXPECT_EQ(parent->completedUnitCount(), 10);
  child->setCompletedUnitCount(0);  // which the parent has let go of
  EXPECT_EQ(parent->completedUnitCount(), 10);

  const auto pair = Progress::discrete(2);
  const auto first = Progress::discrete(5);
  const auto second = Progress::discrete(5);
  pair->addChild(first, 1);
  pair->addChild(second, 1);
  second->setCompletedUnitCount(5);
  EXPECT_DOUBLE_EQ(pair->fractionCompleted(), 0.5);
  first->setTotalUnitCount(0);
  first->setCompletedUnitCount(1);
  EXPECT_EQ(pair->fractionCompleted(), 1);
  EXPECT_EQ(pair->completedUnitCount(), 2);

  const auto finished = Progress::discrete(1);
  finished->setCompletedUnitCount(1);
  const auto late = Progress::discrete(kMost);
  late->setCompletedUnitCount(kMost - 1);
  late->addChild(finished, 7);
  EXPECT_EQ(late->completedUnitCount(), kMost) << "the sum wrapped";
}

TEST(Progress, GivesTheUnitsToTheFirstProgressMadeWhileCurrent) {
  const auto parent = Progress::discrete(100);
  parent->becomeCurrent(100);
  EXPECT_EQ(Progress::current(), parent);
  const auto alone = Progress::discrete(1);
  const auto first = Progress::make(1);
  const auto second = Progress::make(1);
  first->becomeCurrent(1);
  std::thread([] { EXPECT_EQ(Progress::current(), nullptr); }).join();
  first->resignCurrent();  // nobody took the unit: the first has finished
  EXPECT_EQ(parent->fractionCompleted(), 1);
  parent->resignCurrent();
  EXPECT_EQ(parent->completedUnitCount(), 100);
  EXPECT_EQ(Progress::current(), nullptr);

  const auto other = Progress::discrete(100);
  other->becomeCurrent(100);
  const auto child = Progress::make(1);
  const auto unattached = Progress::make(1);
  other->resignCurrent();
  unattached->setCompletedUnitCount(1);
  EXPECT_EQ(other->fractionCompleted(), 0);
  child->setCompletedUnitCount(1);
  EXPECT_EQ(other->fractionCompleted(), 1);
}

TEST(Progress, CancelsDownwardsAndRunsHandlersElsewhere) {
  const auto top = Progress::discrete(2);
  const auto middle = Progress::discrete(1);
  const auto leaf = Progress::discrete(1);
  top->addChild(middle, 1);
  middle->addChild(leaf, 1);
  std::promise<std::thread::id> ranOn;
  leaf->setCancellationHandler([&] {
    EXPECT_TRUE(middle->isCancelled());  // no lock is held
    ranOn.set_value(std::this_thread::get_id());
  });
  middle->cancel();
  middle->cancel();  // a second run of the handler would throw
  EXPECT_NE(ranOn.get_future().get(), std::this_thread::get_id());
  EXPECT_TRUE(leaf->isCancelled());
  EXPECT_FALSE(top->isCancelled());
  EXPECT_EQ(leaf->completedUnitCount(), 0);

  const auto late = Progress::discrete(1);
  std::promise<void> lateRan;
  late->setCancellationHandler([&] { lateRan.set_value(); });
  middle->addChild(late, 1);
  lateRan.get_future().get();
  std::promise<void> nextRan;
  late->setCancellationHandler([&] { nextRan.set_value(); });
  nextRan.get_future().get();
}

TEST(Progress, LetsGoOfHandlersOutsideItsLock) {
  const auto parent = Progress::discrete(1);
  auto child = Progress::discrete(1);
  parent->addChild(child, 1);
  std::int64_t seen = -1;
  auto onRelease = std::shared_ptr<void>(
      nullptr, [&seen, parent = parent.get()](void*) { seen = parent->completedUnitCount(); });
  child->setCancellationHandler([held = std::move(onRelease)] {});
  Progress* last = child.get();
  child.reset();                   // the parent's is the last reference now
  last->setCompletedUnitCount(1);  // which goes with this
  EXPECT_EQ(seen, 1);
}

TEST(Progress, StopsAtProgrammingErrors) {
  const auto parent = Progress::discrete(1);
  const auto child = Progress::discrete(1);
  parent->addChild(child, 1);
  EXPECT_DEATH(parent->addChild(child, 1), "has a parent");
  EXPECT_DEATH(child->addChild(parent, 1), "ancestor of its parent");
  EXPECT_DEATH(child->addChild(Progress::discrete(1), 1); parent->resignCurrent(), "not current");
}

TEST(Progress, MayBeUsedByManyThreads) {
  const auto top = Progress::discrete(4 * 50);
  inThreads(4, [&](int thread) {
    if (thread == 0) top->cancel();
    for (int i = 0; i < 50; ++i) {
      top->becomeCurrent(1);
      const auto child = Progress::make(2);
      top->resignCurrent();
      child->setCancellationHandler([child] { (void)child->isFinished(); });
      for (int unit = 1; unit <= 2; ++unit) {
        child->setCompletedUnitCount(unit);
        EXPECT_LE(top->fractionCompleted(), 1.0 + 1e-9);
      }
      child->setCancellationHandler({});
    }
  });
  EXPECT_EQ(top->completedUnitCount(), 200);
}

}  // namespace
}  // namespace tavlen
