#pragma once

#include <functional>
#include <string_view>

/// Where the library says what it answers with an empty result and nobody else would hear.
///
/// Threads: any. No lock is held while the sink runs.
namespace tavlen {

/// Takes one message, without a line end. May be called by several threads at once.
using LogSink = std::function<void(std::string_view message)>;

void logMessage(std::string_view message);

/// Replaces the sink; an empty one stands for the platform's own, which is the system's log on the
/// device and the standard error stream elsewhere. A call of the former sink may still be running
/// on another thread.
void setLogSink(LogSink sink);

/// Writes `message` as one line to the standard error stream. Messages hold names that others
/// chose: control characters are written as escapes.
void logToStandardError(std::string_view message);

}  // namespace tavlen
