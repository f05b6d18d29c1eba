#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

/// The system's service that knows the running apps, a private class that is looked up by name.
namespace tavlen::SystemService {

/// Whether the class and its shared object are there: on a device they are.
bool isAvailable();

/// The pid of the running app; nothing when it does not run or the service is missing. Never below
/// 1. Threads: any.
std::optional<pid_t> pidForApplication(const std::string& bundleID);

}  // namespace tavlen::SystemService
