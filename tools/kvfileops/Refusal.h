#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace tavlen::fileops {

/// The program declines to do what it was asked for. The text begins with the path in question.
class Refusal : public std::runtime_error {
 public:
  Refusal(const std::filesystem::path& path, const std::string& reason)
      : std::runtime_error(path.string() + ": " + reason) {}
};

}  // namespace tavlen::fileops
