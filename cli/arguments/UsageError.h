#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace tavlen::cli {

/// Invalid arguments. The command prints the message and exits with the status of wrong usage.
class UsageError : public std::runtime_error {
 public:
  /// Constructed from the whole message.
  using std::runtime_error::runtime_error;
  /// `argument` is the name of an argument or an option, as in help.
  UsageError(const std::string& argument, const std::string& problem)
      : std::runtime_error(argument + ": " + problem) {}
  /// The same, whose hint leads to the help of `command`, such as "tavlen hook".
  static UsageError about(std::string command, const std::string& message) {
    UsageError error(message);
    error.command_ = std::move(command);
    return error;
  }

  /// The command to read about; nothing for the one that the user chose.
  const std::optional<std::string>& command() const { return command_; }

 private:
  std::optional<std::string> command_;
};

}  // namespace tavlen::cli
