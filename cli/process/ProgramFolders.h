#pragma once

#include <filesystem>

namespace tavlen::cli {

/// The folder of the command's resources, such as the transpiler script: share/tavlen next to the
/// folder that contains the program.
std::filesystem::path resourceFolder();

}  // namespace tavlen::cli
