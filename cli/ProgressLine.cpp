#include "cli/ProgressLine.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "cli/Console.h"
#include "tavlen/foundation/TerminalText.h"

namespace tavlen::cli {

namespace {

constexpr std::chrono::milliseconds kInterval(200);
/// Back to the line's begin; what stands behind the cursor goes.
constexpr const char* kNewLine = "\r\x1B[K";

}  // namespace

ProgressLine::ProgressLine(const std::string& work) : work_(oneLine(work)) {
  if (::isatty(STDERR_FILENO) == 1) thread_ = std::thread([this] { show(); });
}

ProgressLine::~ProgressLine() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(lock_);
    hasEnded_ = true;
  }
  end_.notify_one();
  thread_.join();
}

void ProgressLine::show() {
  bool isShown = false;
  std::unique_lock lock(lock_);
  while (!end_.wait_for(lock, kInterval, [this] { return hasEnded_; })) {
    const double fraction = std::clamp(progress_->fractionCompleted(), 0.0, 1.0);
    printMessage(kNewLine + work_ + ": " + std::to_string(static_cast<int>(fraction * 100)) + " %");
    isShown = true;
  }
  if (isShown) printMessage(kNewLine);
}

}  // namespace tavlen::cli
