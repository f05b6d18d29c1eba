#pragma once

#include "tavlen/device/DevicePaths.h"
#include "tests/cli/CommandTest.h"
#include "tests/support/AppPlist.h"

namespace tavlen {

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
  /// Makes a tweak by the command; gives its identifier.
  std::string newTweak(const std::string& name, const std::string& app = "com.example.notes") {
    const Result made = run("new --app " + app, {name});
    EXPECT_EQ(made.status, 0) << made.err;
    return made.out.substr(0, made.out.find('\n'));
  }
  /// The path in folder() of what lies in the store.
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
