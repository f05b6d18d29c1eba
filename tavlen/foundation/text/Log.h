#pragma once

#include <functional>
#include <string_view>

#include "tavlen/foundation/base/API.h"

/// The log for failures that the library answers with an empty result, which would otherwise go
/// unnoticed.
///
/// Threads: any. No lock is held while the sink runs.
namespace tavlen {

/// Receives one message, without a line end. May be called by several threads at once.
using LogSink = std::function<void(std::string_view message)>;

/// Passes `message` to the sink.
TAVLEN_API void logMessage(std::string_view message);

/// Replaces the sink. An empty function restores the platform's own: the system log on the device,
/// the standard error stream elsewhere. A call of the former sink may still be running on another
/// thread.
TAVLEN_API void setLogSink(LogSink sink);

/// Writes `message` as one line to the standard error stream. Messages contain names from foreign
/// files, so control characters are escaped.
TAVLEN_API void logToStandardError(std::string_view message);

}  // namespace tavlen
