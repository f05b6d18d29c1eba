#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

/// The system's service that knows and opens apps, a private class that is looked up by name.
namespace tavlen::SystemService {

/// Whether the class and its shared object are there: on a device they are.
bool isAvailable();

/// The pid of the running app; nothing when it does not run or the service is missing. Never below
/// 1. Threads: any.
std::optional<pid_t> pidForApplication(const std::string& bundleID);

struct OpenOptions {
  bool isSuspended = false;  ///< the app starts without coming to the front
  /// Variables that the app's process gets in addition to its own.
  std::map<std::string, std::string> environment;
};

/// Takes the description of an error, or nothing where the app was opened. Must not throw.
using OpenCompletion = std::function<void(const std::optional<std::string>& error)>;

/// Asks the system to open the app and returns without waiting for that.
///
/// `completion` is the system's to call, from any thread: soon, late, several times or never; it is
/// kept for as long as the system keeps it. Where the system cannot be asked, it is called with an
/// error at once, on this thread. Threads: any.
void openApplication(const std::string& bundleID, const OpenOptions& options,
                     OpenCompletion completion);

}  // namespace tavlen::SystemService
