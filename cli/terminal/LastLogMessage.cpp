#include "cli/terminal/LastLogMessage.h"

#include <mutex>
#include <string_view>
#include <utility>

namespace tavlen::cli {

namespace {

std::mutex lock;
std::string last;  // guarded by lock

}  // namespace

LogSink keepingLastMessage(LogSink next) {
  return [next = std::move(next)](std::string_view message) {
    {
      const std::lock_guard guard(lock);
      last = message;
    }
    next(message);
  };
}

std::string lastLogMessage() {
  const std::lock_guard guard(lock);
  return last;
}

}  // namespace tavlen::cli
