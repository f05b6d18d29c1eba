#include "tavlen/foundation/text/Log.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "tavlen/foundation/text/EscapedText.h"

#if defined(__APPLE__)
#include <os/log.h>
#endif

namespace tavlen {

namespace {

std::mutex sinkLock;
/// Never destroyed: other threads may log while the process ends.
std::shared_ptr<const LogSink>& currentSink() {
  static auto& sink = *new std::shared_ptr<const LogSink>;
  return sink;
}

void logToPlatform(std::string_view message) {
#if defined(__APPLE__)
  os_log(OS_LOG_DEFAULT, "%{public}s", std::string(message).c_str());
#else
  logToStandardError(message);
#endif
}

}  // namespace

void logMessage(std::string_view message) {
  std::shared_ptr<const LogSink> sink;
  {
    const std::lock_guard lock(sinkLock);
    sink = currentSink();
  }
  if (sink != nullptr) {
    (*sink)(message);
  } else {
    logToPlatform(message);
  }
}

void setLogSink(LogSink sink) {
  std::shared_ptr<const LogSink> next;
  if (sink) next = std::make_shared<const LogSink>(std::move(sink));
  const std::lock_guard lock(sinkLock);
  currentSink().swap(next);  // the former sink is destroyed after the lock is released
}

void logToStandardError(std::string_view message) {
  const std::string line = escapedForTerminal(message) + "\n";
  // One call, so that the lines of several threads do not mix. A failure cannot be reported
  // anywhere.
  (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace tavlen
