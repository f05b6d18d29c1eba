#include "tests/cli/CommandTest.h"

#include <sys/wait.h>

#include <csignal>

#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

namespace {

/// Of those, and a null at the end.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void redirect(int descriptor, const std::string& file, int flags) {
  ::dup2(::open(file.c_str(), flags | O_CLOEXEC, 0600), descriptor);
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

pid_t startCommand(const std::string& program, std::vector<std::string> words,
                   std::vector<std::string> variables, const std::function<void()>& prepare) {
  words.insert(words.begin(), program);
  variables.emplace_back("LC_ALL=C");
  // What a preset tells the engine and the sanitizers, and nothing else of this machine.
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::string_view name = text.substr(0, text.find('='));
    if (name.starts_with("JSC_") || name.ends_with("SAN_OPTIONS")) variables.emplace_back(text);
  }
  const std::vector<char*> arguments = pointersTo(words);
  const std::vector<char*> environment = pointersTo(variables);
  const pid_t child = ::fork();
  if (child != 0) return child;
  prepare();
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) std::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::execve(arguments[0], arguments.data(), environment.data());
  ::_exit(127);
}

void CommandTest::helper(const std::string& script) {
  namespace fs = std::filesystem;
  const fs::path folder = outputs_.path() / "installed/bin";
  if (fs::create_directories(folder)) {
    fs::copy_file(paths().command, folder / "tavlen");
    fs::create_directory_symlink(fs::path(paths().command).parent_path().parent_path() / "share",
                                 folder.parent_path() / "share");
    program_ = folder / "tavlen";
  }
  const fs::path helper = outputs_.write("installed/bin/kvfileops", "#!/bin/sh\n" + script + "\n");
  fs::permissions(helper, fs::perms::owner_all);
}

CommandTest::Result CommandTest::run(const std::string& line, const std::vector<std::string>& more,
                                     const std::string& output) const {
  std::vector<std::string> words = wordsOf(line);
  words.insert(words.end(), more.begin(), more.end());
  return resultOf(program_, std::move(words), environment_, output);
}

CommandTest::Result CommandTest::shell(const std::string& script) const {
  std::vector<std::string> variables = environment_;
  variables.push_back("tavlen=" + program_);
  return resultOf("/bin/sh", {"-c", script}, std::move(variables), "");
}

CommandTest::Result CommandTest::resultOf(const std::string& program,
                                          std::vector<std::string> words,
                                          std::vector<std::string> variables,
                                          const std::string& output) const {
  const std::string out = output.empty() ? (outputs_.path() / "out").string() : output;
  const std::string err = (outputs_.path() / "err").string();
  const int writing = O_WRONLY | O_CREAT | O_TRUNC;
  const pid_t child = startCommand(program, std::move(words), std::move(variables), [&] {
    redirect(0, folder() / input_, O_RDONLY);
    redirect(1, out, writing);
    redirect(2, err, writing);
    if (::chdir(folder().c_str()) != 0) ::_exit(127);
  });
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
    const bool hasPlace = error.find(": error: ") != std::string::npos;
    std::string expected = hasPlace ? error : "tavlen: error: " + error;
    if (isWhole && status == 2) expected += result.err.substr(result.err.find("tavlen: see \""));
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

std::vector<std::string> CommandTest::standIns(const std::string& members) const {
  write("script.plist", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" +
                            members + "</dict></plist>");
  return {"LD_PRELOAD=" + paths().standInsLibrary,
          "TAVLEN_STAND_INS=" + (folder() / "script.plist").string()};
}

std::string hookJSON(const std::string& selector, const std::string& signature,
                     const std::string& args) {
  return R"({"className":"A","selector":")" + selector + R"(","signature":")" + signature +
         R"(","isClassMethod":false,"args":{)" + args + "}}";
}

}  // namespace tavlen
