#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/tweaks/LoaderEvent.h"

namespace tavlen::cli {

/// A program that is run with a tweak.
struct TriedProgram {
  std::filesystem::path path;          ///< of an executable file
  std::vector<std::string> arguments;  ///< the whole vector, beginning with the program's name
  std::filesystem::path package;       ///< the folder of the tweak's package
  std::chrono::milliseconds limit;     ///< after which a script is reported as slow
  bool isTraced = false;               ///< whether each hooked call is reported
};

/// The path of the program `name`, which is searched for as shells do. Throws std::system_error if
/// no program has that name, and std::runtime_error if it is empty.
std::filesystem::path programNamed(const std::string& name);

/// Runs the program, which shares the descriptors and the terminal's signals, to its end, and
/// passes on what the loader in it reports. Returns its exit status; as shells do, 128 and the
/// signal's number if a signal ended it. SIGTERM and SIGHUP go on to the program. SIGPIPE is
/// ignored from then on. Throws std::system_error, and std::runtime_error if the loader's path
/// cannot be preloaded. Not thread-safe.
int runTried(const TriedProgram& program, FunctionRef<void(const LoaderEvent&)> receive);

}  // namespace tavlen::cli
