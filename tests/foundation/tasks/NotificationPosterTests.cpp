#include "tavlen/foundation/tasks/NotificationPoster.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavlen {
namespace {

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
  // The lock is free again, for other threads too.
  std::thread([&] { EXPECT_TRUE(posts(poster)); }).join();
}

TEST(NotificationPoster, SerialisesBodiesOfAllThreads) {
  NotificationPoster poster;
  int silent = 0;  // no atomics: the lock is what is tested
  int posted = 0;
  const auto worker = [&] {
    for (int i = 0; i < 300; ++i) {
      poster.performWithoutNotifications([&] { ++silent; });
      poster.performNotificationPostingOperation([&] { ++posted; });
    }
  };
  std::thread threads[] = {std::thread(worker), std::thread(worker), std::thread(worker)};
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(silent, 900);
  EXPECT_EQ(posted, 900);
}

}  // namespace
}  // namespace tavlen
