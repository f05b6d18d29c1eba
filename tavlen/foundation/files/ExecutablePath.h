#pragma once

#include <filesystem>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The path of the running program's file, symbolic links resolved. Throws std::system_error when
/// the system does not tell it. Threads: any.
TAVLEN_API std::filesystem::path executablePath();

}  // namespace tavlen
