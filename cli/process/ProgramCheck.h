#pragma once

#include <filesystem>

namespace tavlen::cli {

/// Throws std::system_error with the path unless `program` can be executed. The library does not
/// report that.
void requireProgram(const std::filesystem::path& program);

/// Throws std::runtime_error unless the device root is "/": a copied tree has no running programs.
void requireRunningDevice();

}  // namespace tavlen::cli
