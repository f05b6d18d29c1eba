#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace tavlen {

/// Throws what errno tells as a std::system_error with `subject`, the path or call that it is
/// about, in the text.
[[noreturn]] inline void throwSystemError(const std::string& subject) {
  throw std::system_error(errno, std::generic_category(), subject);
}

}  // namespace tavlen
