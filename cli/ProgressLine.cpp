#include "cli/ProgressLine.h"

#include <poll.h>
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

ProgressLine::ProgressLine(const std::string& work)
    : work_(oneLine(work)), thread_([this] { show(); }) {}

ProgressLine::~ProgressLine() {
  {
    const std::lock_guard lock(lock_);
    hasEnded_ = true;
  }
  end_.notify_one();
  thread_.join();
}

void ProgressLine::show() {
  const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
  std::unique_lock lock(lock_);
  while (!end_.wait_for(lock, kInterval, [this] { return hasEnded_; })) {
    pollfd end{signals_.descriptor(), 0, 0};
    if (::poll(&end, 1, 0) > 0) progress_->cancel();
    if (isTerminal) print();
  }
  if (isShown_) printMessage(kNewLine);
}

void ProgressLine::print() {
  const double fraction = std::clamp(progress_->fractionCompleted(), 0.0, 1.0);
  printMessage(kNewLine + work_ + ": " + std::to_string(static_cast<int>(fraction * 100)) + " %");
  isShown_ = true;
}

}  // namespace tavlen::cli
