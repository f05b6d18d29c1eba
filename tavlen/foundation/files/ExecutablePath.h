#pragma once

#include <filesystem>

namespace tavlen {

/// The path of the running program's file, symbolic links resolved. Throws std::system_error when
/// the system does not tell it. Threads: any.
std::filesystem::path executablePath();

}  // namespace tavlen
