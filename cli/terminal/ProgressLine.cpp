#include "cli/terminal/ProgressLine.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "cli/terminal/Console.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/DisplayWidth.h"
#include "cli/terminal/TerminalWidth.h"
#include "tavlen/foundation/files/PeerEnd.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

constexpr std::chrono::milliseconds kInterval(200);
/// Moves the cursor to the start of the line and clears the line.
constexpr const char* kNewLine = "\r\x1B[K";

constexpr std::size_t kNarrowest = 12;

/// A bar of `width` columns, including brackets; empty if that is too narrow.
std::string bar(double fraction, std::size_t width) {
  constexpr std::size_t kWidest = 42;
  if (width < kNarrowest) return "";
  const std::size_t inside = std::min(width, kWidest) - 2;
  const auto full = static_cast<std::size_t>(fraction * static_cast<double>(inside));
  return "[" + std::string(full, '#') + std::string(inside - full, '.') + "]";
}

}  // namespace

ProgressLine::ProgressLine(const std::string& work)
    : work_(escapedForTerminal(work)), thread_([this] { show(); }) {}

ProgressLine::~ProgressLine() {
  {
    const std::lock_guard lock(lock_);
    hasEnded_ = true;
  }
  end_.notify_one();
  thread_.join();
}

void ProgressLine::show() {
  const bool isTerminal = !hasJSONMessages() && ::isatty(STDERR_FILENO) == 1;
  std::unique_lock lock(lock_);
  while (!end_.wait_for(lock, kInterval, [this] { return hasEnded_; })) {
    pollfd end = pollForPeerEnd(signals_.descriptor());
    const bool isCancelled = ::poll(&end, 1, 0) > 0;
    if (isTerminal && !isCancelled) print();
    if (!isCancelled) continue;
    // Clear the bar, so that the final message starts on an empty line.
    if (std::exchange(isShown_, false)) printMessage(kNewLine);
    progress_->cancel();
  }
  if (isShown_) printMessage(kNewLine);
}

void ProgressLine::print() {
  const double fraction = std::clamp(progress_->fractionCompleted(), 0.0, 1.0);
  const std::string percent = std::to_string(static_cast<int>(fraction * 100)) + " %";
  // A wrapped line could not be cleared completely. If space is short, drop the text, not the bar.
  const std::size_t columns = terminalColumns(STDERR_FILENO);
  std::size_t taken = displayWidth(work_) + percent.size() + 4;  // with ": " and two blanks
  const bool isWide = taken + kNarrowest > columns;
  if (isWide) taken = percent.size() + 2;
  std::string line = isWide ? "" : work_ + ": ";
  if (columns > taken) line += bar(fraction, columns - taken);
  printMessage(kNewLine + line + " " + percent);
  isShown_ = true;
}

}  // namespace tavlen::cli
