#pragma once

#include <string>

namespace tavlen {

/// The text of a new random UUID: 36 characters, hexadecimal digits in upper case. Threads: any.
std::string newUUIDText();

}  // namespace tavlen
