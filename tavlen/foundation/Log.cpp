#include "tavlen/foundation/Log.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

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

bool isControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
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
  currentSink().swap(next);  // the former one is destroyed after the lock
}

void logToStandardError(std::string_view message) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string line;
  line.reserve(message.size() + 1);
  for (const char character : message) {
    if (isControl(character)) {
      const auto byte = static_cast<unsigned char>(character);
      line += {'\\', 'x', kHex[byte >> 4U], kHex[byte & 0xFU]};
    } else {
      line += character;
    }
  }
  line += '\n';
  // One call, so that lines of several threads do not mix. There is nowhere to say that it failed.
  (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace tavlen
