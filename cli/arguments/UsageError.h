#pragma once

#include <stdexcept>
#include <string>

namespace tavlen::cli {

/// Arguments that mean nothing to the command, which then ends with the exit status of wrong usage.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  /// What is wrong with `argument`, an argument's or an option's name as help shows it.
  UsageError(const std::string& argument, const std::string& problem)
      : std::runtime_error(argument + ": " + problem) {}
};

}  // namespace tavlen::cli
