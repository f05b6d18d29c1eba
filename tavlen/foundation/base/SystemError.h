#pragma once

#include <cerrno>
#include <string>
#include <system_error>

/// Failures of system calls as std::system_error. The text contains `subject`: the path or the call
/// that failed. Threads: any.
namespace tavlen {

/// Throws the error `code`, an errno value.
[[noreturn]] inline void throwSystemError(int code, const std::string& subject) {
  throw std::system_error(code, std::generic_category(), subject);
}

/// Throws the error in errno.
[[noreturn]] inline void throwSystemError(const std::string& subject) {
  throwSystemError(errno, subject);
}

}  // namespace tavlen
