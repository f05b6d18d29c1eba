#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tavlen::fileops {

/// The program does not do what it is asked for.
class Refusal : public std::runtime_error {
 public:
  Refusal(const std::filesystem::path& path, const std::string& reason)
      : std::runtime_error(path.string() + ": " + reason) {}
};

}  // namespace tavlen::fileops
