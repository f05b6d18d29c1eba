#include <memory>

#include "tests/cli/CommandStoreTest.h"
#include "tests/cli/RunningCommand.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

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

  /// Once its watches stand.
  std::unique_ptr<RunningCommand> watch(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> words = {"watch", "--root", (folder() / "tree").string()};
    words.insert(words.end(), options.begin(), options.end());
    auto command = std::make_unique<RunningCommand>(words, std::vector<std::string>());
    const std::string first = command->until();
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
      {[&] { run("collection add C", {id}); }, "changed C.collection manifest C"},
      {[&] { run("delete", {id}); }, "deleted " + id + " manifest,script A b"},
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
  placeCollection("a\\nb");
  const std::string line = watched->until();
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
