#include "tavlen/foundation/files/DirectoryWatcher.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/PeerEnd.h"

#ifdef __linux__
#include <sys/inotify.h>
#endif

namespace tavlen {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookInterval(1000);
/// The sleep ends even when all folders are watched: network volumes send no notices of changes on
/// other machines.
constexpr milliseconds kLongestSleep(30'000);
constexpr milliseconds kSettlingTime(20);

enum class Ready { nothing, notices, end };

Ready waitFor(int notices, std::span<const int> ends, milliseconds atMost) {
  std::vector<pollfd> descriptors = {{notices, POLLIN, 0}};
  for (const int end : ends) descriptors.push_back(pollForPeerEnd(end));
  const int count = ::poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()),
                           static_cast<int>(atMost.count()));
  if (count < 0 && errno != EINTR) throwSystemError("poll");
  if (count <= 0) return Ready::nothing;
  const bool isEnd = std::any_of(descriptors.begin() + 1, descriptors.end(),
                                 [](const pollfd& end) { return end.revents != 0; });
  return isEnd ? Ready::end : Ready::notices;
}

}  // namespace

#ifdef __linux__

DirectoryWatcher::DirectoryWatcher() : notices_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

void DirectoryWatcher::watch(const std::vector<std::filesystem::path>& folders) {
  constexpr std::uint32_t kEvents = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
  std::set<int> watches;
  isComplete_ = notices_.get() >= 0;
  if (!isComplete_) return;
  for (const std::filesystem::path& folder : folders) {
    const int watch = ::inotify_add_watch(notices_.get(), folder.c_str(), kEvents);
    if (watch >= 0) {
      watches.insert(watch);
    } else if (errno != ENOENT && errno != ENOTDIR) {
      isComplete_ = false;
    }
  }
  for (const int former : watches_) {
    if (!watches.contains(former)) ::inotify_rm_watch(notices_.get(), former);
  }
  watches_ = std::move(watches);
}

/// Reads all pending notices; returns whether one of them reports a change.
bool DirectoryWatcher::takeNotices() const {
  bool isChange = false;
  std::array<char, 16'384> buffer;
  for (;;) {
    const ssize_t size = ::read(notices_.get(), buffer.data(), buffer.size());
    if (size <= 0) return isChange;
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
      inotify_event event;
      std::memcpy(&event, buffer.data() + at, sizeof(event));
      at += sizeof(event);
      // The name is padded with zeros. There is none when the notice is about the folder itself.
      const bool isHidden = event.len > 0 && buffer.at(at) == '.';
      isChange = isChange || (!isHidden && event.mask != IN_IGNORED);
      at += event.len;
    }
  }
}

#else

DirectoryWatcher::DirectoryWatcher() = default;

void DirectoryWatcher::watch(const std::vector<std::filesystem::path>& /*folders*/) {}

bool DirectoryWatcher::takeNotices() const { return false; }

#endif

DirectoryWatcher::Wake DirectoryWatcher::wait(std::span<const int> ends) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point last = Clock::now() + (isComplete_ ? kLongestSleep : kLookInterval);
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(last - Clock::now());
    if (left <= milliseconds(0)) return Wake::change;
    const Ready ready = waitFor(notices_.get(), ends, left);
    if (ready == Ready::end) return Wake::end;
    if (ready == Ready::nothing || !takeNotices()) continue;
    if (waitFor(-1, ends, kSettlingTime) == Ready::end) return Wake::end;
    takeNotices();
    return Wake::change;
  }
}

}  // namespace tavlen
