#include "tavlen/foundation/tasks/NotificationCenter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tavlen {
namespace {

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
  const struct {
    Notification posted;
    std::string called;
  } rows[] = {
      {{"N", nullptr, {}}, "126"}, {{"N", &a, {}}, "12346"}, {{"N", &b, {}}, "126"},
      {{"M", &a, {}}, "245"},      {{"", nullptr, {}}, "2"},
  };
  for (const auto& row : rows) {
    called.clear();
    center.post(row.posted);
    EXPECT_EQ(called, row.called);
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
  const auto worker = [&] {
    for (int i = 0; i < 300; ++i) {
      const auto token = center.addObserver("N", nullptr, [](const Notification&) {});
      center.post({"N", nullptr, {}});
      center.removeObserver(token);
    }
  };
  std::thread threads[] = {std::thread(worker), std::thread(worker), std::thread(worker)};
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 900);
}

}  // namespace
}  // namespace tavlen
