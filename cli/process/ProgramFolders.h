#pragma once

#include <filesystem>

namespace tavlen::cli {

/// The folder of the command's resources, such as the transpiler script: share/tavlen next to the
/// folder that contains the program.
std::filesystem::path resourceFolder();

/// The library that is preloaded into programs to try tweaks: in lib/tavlen next to the same
/// folder.
std::filesystem::path loaderLibrary();

}  // namespace tavlen::cli
