#include <gmock/gmock.h>

#include <memory>

#include "tests/cli/RunningCommand.h"

namespace tavlen {
namespace {

class WatchCommandTest : public CommandStoreTest {
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

  std::unique_ptr<RunningCommand> watch(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"watch", "--root", (folder() / "tree").string()};
    words.insert(words.end(), options.begin(), options.end());
    auto command = std::make_unique<RunningCommand>(words, std::vector<std::string>());
    const std::string first = command->until();
    EXPECT_NE(first.find("watching "), std::string::npos) << first;
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
      {[&] { run("collection add C", {id}); }, "changed C.collection manifest C"},
      {[&] { place(id + "/Resources/x", ""); }, "changed " + id + " resources A b"},
      {[&] { run("install", {id}); }, "installed " + id + " com.example.notes A b"},
      {[&] { run("delete", {id}); }, "uninstalled " + id + " com.example.notes A b"},
      {[] {}, "deleted " + id + " manifest,script,resources A b"},
      {[&] { fs::remove_all((folder() / stored("")).parent_path()); },
       "deleted C.collection manifest C"},
      {[&] { place("B/Manifest.json", "{"); }, "created B manifest -"},
  };
  for (const auto& step : steps) {
    step.change();
    EXPECT_EQ(watched->until(), step.line);
  }
}

TEST_F(WatchCommandTest, PrintsAnObjectALine) {
  place("A/Manifest.json", "{");
  const auto watched = watch({"--json"});
  place("A/Icon.png", "");
  EXPECT_EQ(watched->until(),
            R"({"event":"changed","kind":"tweak","identifier":"A","documents":["icon"]})");
  const std::string id = newTweak("T");
  EXPECT_THAT(watched->until(), testing::HasSubstr(id));
  run("install T");
  EXPECT_EQ(watched->until(), R"({"event":"installed","kind":"tweak","identifier":")" + id +
                                  R"(","name":"T","bundleID":"com.example.notes"})");
  placeCollection("a\\nb");
  const std::string line = watched->until();
  EXPECT_TRUE(line.starts_with(R"({"event":"created","kind":"collection",)")) << line;
}

TEST_F(WatchCommandTest, EndsInOrder) {
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
    const auto watched = watch();
    watched->signal(number);
    EXPECT_EQ(watched->status(), 0) << number;
  }
  const auto unread = watch();
  unread->closeOutput();
  EXPECT_EQ(unread->status(), 0);
}

}  // namespace
}  // namespace tavlen
