#include "tests/cli/CommandTest.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string_view>
#include <utility>

#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

namespace {

/// A locale of its own, and what a preset tells the engine and the sanitizers: nothing else of this
/// machine.
std::vector<char*> childEnvironment(std::vector<std::string>& further) {
  static std::string locale = "LC_ALL=C";
  std::vector<char*> environment = {locale.data()};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    for (const std::string_view name :
         {"JSC_", "ASAN_OPTIONS=", "LSAN_OPTIONS=", "TSAN_OPTIONS=", "UBSAN_OPTIONS="}) {
      if (text.starts_with(name)) environment.push_back(*entry);
    }
  }
  for (std::string& variable : further) environment.push_back(variable.data());
  environment.push_back(nullptr);
  return environment;
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words;
  bool isQuoted = false;
  bool isInWord = false;
  for (const char c : line) {
    if (c == ' ' && !isQuoted) {
      isInWord = false;
      continue;
    }
    if (!std::exchange(isInWord, true)) words.emplace_back();
    if (c == '\'') {
      isQuoted = !isQuoted;
    } else {
      words.back() += c;
    }
  }
  return words;
}

}  // namespace

pid_t startCommand(std::vector<std::string> arguments, const std::vector<char*>& environment,
                   const posix_spawn_file_actions_t& actions) {
  arguments.insert(arguments.begin(), paths().command);
  std::vector<char*> argv;
  for (std::string& word : arguments) argv.push_back(word.data());
  argv.push_back(nullptr);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &signals);
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) sigaddset(&signals, number);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  pid_t child = 0;
  EXPECT_EQ(::posix_spawn(&child, paths().command.c_str(), &actions, &attributes, argv.data(),
                          environment.data()),
            0);
  posix_spawnattr_destroy(&attributes);
  return child;
}

CommandTest::Result CommandTest::run(const std::string& line, const std::vector<std::string>& more,
                                     const std::string& output) const {
  std::vector<std::string> words = wordsOf(line);
  words.insert(words.end(), more.begin(), more.end());
  const std::string out = output.empty() ? (outputs_.path() / "out").string() : output;
  const std::string err = (outputs_.path() / "err").string();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, (folder() / input_).c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addchdir_np(&actions, folder().c_str());
  std::vector<std::string> further = environment_;
  const pid_t child = startCommand(std::move(words), childEnvironment(further), actions);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (child > 0) waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
          output.empty() ? readFile(out) : "", readFile(err)};
}

void CommandTest::expectRefused(const std::string& start,
                                const std::vector<Refusal>& refusals) const {
  for (const auto& [line, status, error] : refusals) {
    SCOPED_TRACE(line);
    const Result result = run(start + " " + line);
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, "");
    const bool isWhole = error.ends_with('\n');
    std::string expected = (status == 1 ? "tavlen: error: " : "") + error;
    if (isWhole && status == 2) expected += "Run with --help for more information.\n";
    EXPECT_EQ(isWhole ? result.err : result.err.substr(0, expected.size()), expected);
  }
}

void CommandTest::writeTweak(const std::string& name, const std::string& hooks,
                             const std::string& configuration) const {
  write(name + "/Manifest.json",
        R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b")" + configuration +
            R"(},"overrides":[],"hooks":[)" + hooks + "]}");
}

std::string CommandTest::contents(const std::string& name) const {
  return readFile(folder() / name);
}

std::string hookJSON(const std::string& selector, const std::string& signature,
                     const std::string& args) {
  return R"({"className":"A","selector":")" + selector + R"(","signature":")" + signature +
         R"(","isClassMethod":false,"args":{)" + args + "}}";
}

}  // namespace tavlen
