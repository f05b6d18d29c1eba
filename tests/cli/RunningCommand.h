#pragma once

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "tests/cli/CommandTest.h"

namespace tavlen {

/// A running command, whose lines are read as they come. It is killed if it takes far longer than
/// anything does.
class RunningCommand {
 public:
  /// It has a terminal of so many columns, or prints to a pipe where that is 0.
  RunningCommand(std::vector<std::string> words, std::vector<std::string> variables,
                 unsigned short columns = 0) {
    std::array<int, 2> pipe{};
    const winsize size{24, columns, 0, 0};
    EXPECT_EQ(columns > 0 ? ::openpty(pipe.data(), &pipe[1], nullptr, nullptr, &size)
                          : ::pipe2(pipe.data(), O_CLOEXEC),
              0);
    child_ = startCommand(paths().command, std::move(words), std::move(variables), [&] {
      ::alarm(120);
      if (columns > 0) ::dup2(pipe[1], 0);
      ::dup2(pipe[1], 1);
      ::dup2(pipe[1], 2);
    });
    ::close(pipe[1]);
    output_ = pipe[0];
  }
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;
  ~RunningCommand() {
    closeOutput();
    if (child_ > 0) {
      ::kill(child_, SIGKILL);
      ::waitpid(child_, nullptr, 0);
    }
  }

  /// What it prints, to either stream, until the next `end`, or until its own end.
  std::string until(char end = '\n') {
    std::array<char, 4096> bytes;
    while (text_.find(end) == std::string::npos) {
      const ssize_t size = ::read(output_, bytes.data(), bytes.size());
      if (size <= 0) break;
      text_.append(bytes.data(), static_cast<std::size_t>(size));
    }
    const std::size_t size = std::min(text_.find(end), text_.size());
    const std::string found = text_.substr(0, size);
    text_.erase(0, size + 1);
    return found;
  }
  /// Types on the terminal.
  void type(std::string_view text) const {
    EXPECT_EQ(::write(output_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void closeOutput() {
    if (output_ >= 0) ::close(std::exchange(output_, -1));
  }
  void signal(int number) const { ::kill(child_, number); }
  /// Its exit status, or minus the signal that ended it.
  int status() {
    int status = 0;
    ::waitpid(std::exchange(child_, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t child_ = 0;
  int output_ = -1;
  std::string text_;
};

}  // namespace tavlen
