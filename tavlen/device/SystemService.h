#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"

/// The system's service that knows and opens apps: a private class that is looked up by name.
namespace tavlen::SystemService {

/// Whether the class and its shared object exist, as they do on a device. Threads: any.
TAVLEN_API bool isAvailable();

/// The pid of a running app, at least 1; nothing when it is not running or the service is missing.
/// Threads: any.
TAVLEN_API std::optional<pid_t> pidForApplication(const std::string& bundleID);

/// How an app is opened.
struct TAVLEN_API OpenOptions {
  bool isSuspended = false;  ///< start the app without bringing it to the front
  /// Environment variables for the app's process, in addition to its own.
  std::map<std::string, std::string> environment;
};

/// Receives the description of an error, or nothing when the app was opened. Must not throw.
using OpenCompletion = std::function<void(const std::optional<std::string>& error)>;

/// Asks the system to open the app and returns at once.
///
/// The system calls `completion` on any thread: soon, late, several times or never, and keeps it as
/// long as it likes. When the system cannot be asked, it is called at once, on this thread, with an
/// error. Threads: any.
TAVLEN_API void openApplication(const std::string& bundleID, const OpenOptions& options,
                                OpenCompletion completion);

}  // namespace tavlen::SystemService
