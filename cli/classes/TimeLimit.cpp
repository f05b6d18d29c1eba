#include "cli/classes/TimeLimit.h"

#include "tavlen/foundation/text/NumberText.h"

namespace tavlen::cli {

std::string overrunText(std::chrono::milliseconds limit) {
  std::string text = "took longer than ";
  appendNumber(text, std::chrono::duration<double>(limit).count());
  return text + " s";
}

TimeLimit::TimeLimit(Progress& progress, OptionalLimit limit) : limit_(limit) {
  if (limit_) thread_ = std::thread([this, &progress] { watch(progress); });
}

TimeLimit::~TimeLimit() {
  {
    const std::lock_guard lock(lock_);
    hasEnded_ = true;
  }
  end_.notify_one();
  if (thread_.joinable()) thread_.join();
}

bool TimeLimit::isOverrun() {
  const std::lock_guard lock(lock_);
  return isOverrun_;
}

void TimeLimit::watch(Progress& progress) {
  std::unique_lock lock(lock_);
  if (end_.wait_for(lock, *limit_, [this] { return hasEnded_; }) || progress.isCancelled()) return;
  isOverrun_ = true;
  progress.cancel();
}

}  // namespace tavlen::cli
