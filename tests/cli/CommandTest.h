#pragma once

#include <sys/types.h>

#include <utility>

#include "tavlen/device/DevicePaths.h"
#include "tests/support/AppPlist.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"

namespace tavlen {

/// Starts the command, the file `program`, in an environment of `variables` and the locale "C",
/// with nothing ignored or blocked of the signals that end a program: the tests may run in the
/// background of a script, or under nohup. `prepare` is called in the new process.
pid_t startCommand(const std::string& program, std::vector<std::string> words,
                   std::vector<std::string> variables, const std::function<void()>& prepare);

/// Runs the command in a temporary folder, and makes tweaks there.
class CommandTest : public testing::Test {
 protected:
  struct Result {
    int status;  ///< the exit status, or minus the signal that ended it
    std::string out;
    std::string err;
  };

  /// Runs the command in folder() with the words of `line`, which blanks part unless they stand in
  /// single quotes, and then with `more` as they are. What it prints goes to the file `output`
  /// instead where one is named.
  Result run(const std::string& line, const std::vector<std::string>& more = {},
             const std::string& output = "") const;

  /// Runs a script of the shell in folder(), in which "$tavlen" is the command.
  Result shell(const std::string& script) const;

  struct Refusal {
    std::string line;
    int status;
    std::string
        error;  ///< how it begins, after "tavlen: error: " or with its place and "error";
                ///< if it ends with a line's end, no more follows than the reference to help
  };
  /// Runs `start` with each line after it. None may print anything but its error.
  void expectRefused(const std::string& start, const std::vector<Refusal>& refusals) const;

  /// Further variables, "NAME=value", of what is run from now on.
  void setEnvironment(std::vector<std::string> variables) { environment_ = std::move(variables); }
  /// The file, in folder() unless it is absolute, that the standard input of what is run from now
  /// on comes from.
  void setInput(std::string file) { input_ = std::move(file); }

  const fs::path& folder() const { return folder_.path(); }
  void write(const std::string& name, std::string_view bytes) const { folder_.write(name, bytes); }
  /// Makes the tweak `name`; `hooks` are the elements of the manifest's list.
  void writeTweak(const std::string& name, const std::string& hooks,
                  const std::string& configuration = "") const;
  std::string contents(const std::string& name) const;
  /// The variables of a command with the stand-ins, whose script has these members.
  std::vector<std::string> standIns(const std::string& members) const;

  /// What is run from now on is a copy of the command with this script as its helper.
  void helper(const std::string& script);

 private:
  Result resultOf(const std::string& program, std::vector<std::string> words,
                  std::vector<std::string> variables, const std::string& output) const;

  std::string program_ = paths().command;
  TemporaryFolder folder_;
  TemporaryFolder outputs_;
  std::vector<std::string> environment_;
  std::string input_ = "/dev/null";
};

/// A hook of -[A selector] as JSON; `args` are the members of its table.
std::string hookJSON(const std::string& selector, const std::string& signature,
                     const std::string& args = "");

/// In a folder with the device tree "tree", which has the app com.example.notes.
class CommandStoreTest : public CommandTest {
 protected:
  CommandStoreTest() {
    write("tree/Applications/Notes.app/Info.plist", appPlist("com.example.notes", "Notes"));
    environment();
  }

  /// Makes the command's environment of the tree and these variables.
  void environment(std::vector<std::string> variables = {}) {
    variables.push_back("TAVLEN_ROOT=" + (folder() / "tree").string());
    variables.emplace_back("PATH=/usr/bin:/bin");
    variables.push_back("TMPDIR=" + folder().string());
    setEnvironment(std::move(variables));
  }

  std::string newTweak(const std::string& name, const std::string& app = "com.example.notes") {
    const Result made = run("new --app " + app, {name});
    EXPECT_EQ(made.status, 0) << made.err;
    return made.out.substr(0, made.out.find('\n'));
  }
  static std::string stored(const std::string& name) {
    return "tree" + std::string(kTweaksDir) + "/" + name;
  }
  void writeCollection(const std::string& id, const std::string& name,
                       const std::string& members) const {
    write(stored(id + ".collection"),
          R"({"configuration":{"name":")" + name +
              R"(","color":"darkRed","bundleID":"com.example.notes"},"tweaks":[)" + members + "]}");
  }
};

}  // namespace tavlen
