#pragma once

#include <filesystem>

namespace tavlen {

/// The file of the running program, links resolved. Throws std::system_error where the system does
/// not tell.
std::filesystem::path executablePath();

}  // namespace tavlen
