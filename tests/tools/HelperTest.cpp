#include "tests/tools/HelperTest.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>
#include <sstream>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TestPaths.h"

namespace tavlen {

namespace {

constexpr const char* kTweaks =
    "var/mobile/Library/Application Support/Marrowgleam/Installed Tweaks";

void becomeUser(uid_t user) {
  if (::geteuid() != 0) return;  // has no more rights than that user
  if (::setgroups(0, nullptr) != 0 || ::setgid(user) != 0 || ::setuid(user) != 0) {
    ::_exit(HelperTest::kNotStarted);
  }
}

/// Runs `program` in a process of its own, which it is to end. The exit status, or minus the signal
/// that ended it.
int statusOfChild(FunctionRef<void()> program) {
  const pid_t child = ::fork();
  if (child == 0) {
    program();
    ::_exit(HelperTest::kNotStarted);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

HelperTest::HelperTest() : program_(paths().fileOperations), rootVariable_(root_.path().string()) {
  std::filesystem::create_directories(tweaks());
  for (const std::filesystem::path& folder : {root_.path(), outside_.path()}) {
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
  }
}

std::filesystem::path HelperTest::tweaks(const std::string& name) const {
  return name.empty() ? root() / kTweaks : root() / kTweaks / name;
}

void HelperTest::writeTweak(const std::string& name, std::string_view bytes) const {
  write(std::string(kTweaks) + "/" + name, bytes);
}

HelperTest::Result HelperTest::run(const std::vector<std::string>& words, User user) const {
  std::vector<std::string> copies = {program_};
  copies.insert(copies.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const std::string messages = (messages_.path() / "err").string();
  const int status = statusOfChild([&] {
    ::dup2(::open(messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), 2);
    ::setenv("TAVLEN_ROOT", rootVariable_.c_str(), 1);
    if (prepare_ && !prepare_()) return;
    // By its descriptor, because the user may not get through to the folder where it was built.
    const int program = ::open(program_.c_str(), O_RDONLY | O_CLOEXEC);
    if (user == User::nobody) becomeUser(kNobody);
    ::fexecve(program, arguments.data(), environ);
  });
  return {status, readFile(messages)};
}

int HelperTest::status(const std::vector<std::string>& words, User user) const {
  const Result result = run(words, user);
  if (result.status != 0) RecordProperty("message", result.err);
  EXPECT_EQ(result.err.empty(), result.status == 0) << result.err;
  return result.status;
}

std::string HelperTest::contents(const std::filesystem::path& folder) {
  std::set<std::string> lines;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    std::ostringstream line;
    const auto status = entry.symlink_status();
    line << entry.path().lexically_relative(folder).string() << " " << std::oct
         << static_cast<int>(status.permissions());
    if (entry.is_symlink()) {
      line << " -> " << std::filesystem::read_symlink(entry.path()).string();
    } else if (entry.is_regular_file() && entry.file_size() < 10'000) {
      line << " \"" << readFile(entry.path()) << '"';
    } else if (entry.is_directory()) {
      line << "/";
    }
    lines.insert(line.str() + "\n");
  }
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

}  // namespace tavlen
