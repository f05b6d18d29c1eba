#pragma once

#include <string>

#include "tavlen/foundation/text/Log.h"

/// The library logs why some work failed, while its error only says that it did. Threads: any.
namespace tavlen::cli {

/// A sink that keeps each message for lastLogMessage() and passes it to `next`.
LogSink keepingLastMessage(LogSink next);

/// The last message; empty before the first one.
std::string lastLogMessage();

}  // namespace tavlen::cli
