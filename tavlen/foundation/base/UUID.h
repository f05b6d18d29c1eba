#pragma once

#include <string>

namespace tavlen {

/// A new random UUID's text: 36 characters, the hexadecimal digits in upper case. Threads: any.
std::string newUUIDText();

}  // namespace tavlen
