#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <utility>

#include "StoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Far more than anything takes.
constexpr std::chrono::seconds kLimit(30);

/// A running command, whose lines are read as they come.
class RunningCommand {
 public:
  RunningCommand(std::vector<std::string> words, std::vector<std::string> variables) {
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], 2);
    words.insert(words.begin(), TAVLEN_COMMAND);
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    std::vector<char*> environment;
    for (std::string& variable : variables) environment.push_back(variable.data());
    // What the sanitizers are to overlook stands there; of equal names the first counts.
    for (char** variable = environ; *variable != nullptr; ++variable) {
      environment.push_back(*variable);
    }
    environment.push_back(nullptr);
    EXPECT_EQ(
        ::posix_spawn(&child_, TAVLEN_COMMAND, &actions, nullptr, argv.data(), environment.data()),
        0);
    posix_spawn_file_actions_destroy(&actions);
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

  /// The next line that it prints, to either stream; what it has of one when the time is over.
  std::string line() {
    const Clock::time_point last = Clock::now() + kLimit;
    while (text_.find('\n') == std::string::npos && Clock::now() < last) {
      pollfd output = {output_, POLLIN, 0};
      if (::poll(&output, 1, 1000) <= 0) continue;
      std::array<char, 4096> bytes;
      const ssize_t size = ::read(output_, bytes.data(), bytes.size());
      if (size <= 0) break;
      text_.append(bytes.data(), static_cast<std::size_t>(size));
    }
    const std::size_t end = std::min(text_.find('\n'), text_.size());
    const std::string line = text_.substr(0, end);
    text_.erase(0, end + 1);
    return line;
  }
  void closeOutput() {
    if (output_ >= 0) ::close(std::exchange(output_, -1));
  }
  void signal(int number) const { ::kill(child_, number); }
  /// Its exit status, or minus the signal that ended it; nothing good when it does not end.
  int status() {
    int status = 0;
    const Clock::time_point last = Clock::now() + kLimit;
    while (::waitpid(child_, &status, WNOHANG) == 0) {
      if (Clock::now() > last) return -1000;
      ::usleep(10'000);
    }
    child_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t child_ = 0;
  int output_ = -1;
  std::string text_;
};

class WatchCommandTest : public StoreTest {
 protected:
  /// Puts a file into the store in one step, so that it is one change.
  void place(const std::string& name, std::string_view text) const {
    write("new", text);
    fs::create_directories((folder() / stored(name)).parent_path());
    fs::rename(folder() / "new", folder() / stored(name));
  }
  void placeCollection(const std::string& name) const {
    place("C.collection",
          R"({"configuration":{"name":")" + name +
              R"(","color":"darkRed","bundleID":"com.example.notes"},"tweaks":[]})");
  }

  /// Once its watches stand.
  std::unique_ptr<RunningCommand> watch(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"watch", "--root", (folder() / "tree").string()};
    words.insert(words.end(), options.begin(), options.end());
    auto command = std::make_unique<RunningCommand>(words, std::vector<std::string>{"LC_ALL=C"});
    const std::string first = command->line();
    EXPECT_TRUE(first.starts_with("tavlen: watching ")) << first;
    return command;
  }
};

TEST_F(WatchCommandTest, PrintsALineAChangedItem) {
  const auto watched = watch();  // there is no store yet
  const std::string id = newTweak("A b");
  const struct {
    std::function<void()> change;
    std::string line;
  } steps[] = {
      {[] {}, "created " + id + " manifest A b"},
      {[&] { place(id + "/script.objs", "x();"); }, "changed " + id + " script A b"},
      {[&] { placeCollection("C"); }, "created C.collection manifest C"},
      {[&] {
         run({"collection", "add", "C", id});
       },
       "changed C.collection manifest C"},
      {[&] {
         run({"delete", id});
       },
       "deleted " + id + " manifest,script A b"},
      {[&] { fs::remove_all((folder() / stored("")).parent_path()); },
       "deleted C.collection manifest C"},
      {[&] { place("B/Manifest.json", "{"); }, "created B manifest -"},
  };
  for (const auto& step : steps) {
    step.change();
    EXPECT_EQ(watched->line(), step.line);
  }
}

TEST_F(WatchCommandTest, PrintsAnObjectALine) {
  place("A/Manifest.json", "{");
  const auto watched = watch({"--json"});
  place("A/Icon.png", "");
  EXPECT_EQ(watched->line(),
            R"({"event":"changed","kind":"tweak","identifier":"A","documents":["icon"]})");
  placeCollection("a\\nb");
  const std::string line = watched->line();
  EXPECT_TRUE(line.starts_with(R"({"event":"created","kind":"collection",)")) << line;
}

TEST_F(WatchCommandTest, EndsInOrder) {
  for (const int number : {SIGINT, SIGTERM}) {
    const auto watched = watch();
    watched->signal(number);
    EXPECT_EQ(watched->status(), 0) << number;
  }
  // Without a change, too.
  const auto unread = watch();
  unread->closeOutput();
  EXPECT_EQ(unread->status(), 0);
}

}  // namespace
}  // namespace tavlen
