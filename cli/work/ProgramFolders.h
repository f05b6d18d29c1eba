#pragma once

#include <filesystem>

namespace tavlen::cli {

/// The folder of the command's own resources, the transpiler script among them: share/tavlen beside
/// the folder that the program lies in.
std::filesystem::path resourceFolder();

}  // namespace tavlen::cli
