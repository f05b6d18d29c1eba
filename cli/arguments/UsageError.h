#pragma once

#include <stdexcept>
#include <string>

namespace tavlen::cli {

/// Invalid arguments. The command prints the message and exits with the status of wrong usage.
class UsageError : public std::runtime_error {
 public:
  /// Constructed from the whole message.
  using std::runtime_error::runtime_error;
  /// `argument` is the name of an argument or an option, as in help.
  UsageError(const std::string& argument, const std::string& problem)
      : std::runtime_error(argument + ": " + problem) {}
};

}  // namespace tavlen::cli
