#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tavlen::fileops {

/// The program does not do what it is asked for.
class Refusal : public std::runtime_error {
 public:
  Refusal(const std::filesystem::path& path, const std::string& reason)
      : std::runtime_error(path.string() + ": " + reason) {}
};

/// Throws the system's error `code` (an errno) for `path`.
[[noreturn]] inline void fail(int code, const std::filesystem::path& path) {
  throw std::system_error(code, std::generic_category(), path.string());
}

}  // namespace tavlen::fileops
