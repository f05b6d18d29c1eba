#pragma once

#include <string>

#include "cli/arguments/CommandLine.h"

namespace tavlen::cli {

/// Where the device is, as far as the user says.
struct RootOptions {
  std::string root;    ///< the folder that represents the device's "/"
  std::string prefix;  ///< the folder of a rootless jailbreak, a device path
};

/// Adds --root and --prefix, whose defaults are the environment variables TAVLEN_ROOT and
/// TAVLEN_PREFIX. Parsing stores them in `options`.
void addRootOptions(Command app, RootOptions& options);

/// Makes them those of this process, and the root that of its child processes; empty texts change
/// nothing. Call it before starting threads. Throws std::runtime_error if the root is not a folder.
void useRoot(const RootOptions& options);

}  // namespace tavlen::cli
