#pragma once

#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The text of a new random UUID: 36 characters, hexadecimal digits in upper case. Threads: any.
TAVLEN_API std::string newUUIDText();

}  // namespace tavlen
