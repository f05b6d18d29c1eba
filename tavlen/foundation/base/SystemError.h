#pragma once

#include <cerrno>
#include <string>
#include <system_error>

/// Failures of system calls as exceptions: std::system_error with `subject`, the path or call that
/// it is about, in the text. Threads: any.
namespace tavlen {

/// Throws `code`, an error as errno counts them.
[[noreturn]] inline void throwSystemError(int code, const std::string& subject) {
  throw std::system_error(code, std::generic_category(), subject);
}

/// Throws what errno tells.
[[noreturn]] inline void throwSystemError(const std::string& subject) {
  throwSystemError(errno, subject);
}

}  // namespace tavlen
