#include "tavlen/store/StoreSnapshot.h"

#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tests/support/StoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

class StoreSnapshotTest : public StoreTest {
 protected:
  void write(const std::string& name) const {
    root_.write(std::string(kTweaksDir).substr(1) + "/" + name, "text");
  }
  static fs::path stored(const std::string& name) { return TweaksDirectory::url() / name; }
};

/// A change's kind by its sign, and its documents by their first letters: "+T:msi".
std::string text(const std::vector<StoreSnapshot::Change>& changes) {
  std::string text;
  for (const StoreSnapshot::Change& change : changes) {
    text += std::string(text.empty() ? "" : " ") + "+~-"[static_cast<int>(change.kind)] +
            change.id + ":";
    for (const auto document : change.documents) text += "msi"[static_cast<int>(document)];
  }
  return text;
}

TEST_F(StoreSnapshotTest, TellsWhatHasChanged) {
  const struct {
    std::function<void()> change;
    std::string changes;
  } steps[] = {{[] {}, ""},
               {[&] { write("A/script.objs"); }, ""},  // no tweak before its manifest
               {[&] { write("A/Manifest.json"); }, "+A:ms"},
               {[&] { write("B/Manifest.json"); }, "+B:m"},
               {[&] { replaceFile(stored("A/Manifest.json"), "text"); }, "~A:m"},
               {[&] {
                  write("A/Icon.png");
                  fs::remove(stored("A/script.objs"));
                  write("C.collection");
                },
                "~A:si +C.collection:m"},
               {[&] {
                  write("A/Resources/file");
                  write("A/.tavlen-1");
                  write(".tavlen-2");
                  write(".x.collection");
                  write(".TemporaryItems/T/Manifest.json");
                  write("D.txt");
                  fs::create_directories(stored("E/Manifest.json"));
                  fs::create_directories(stored("F.collection"));
                },
                ""},
               {[&] {
                  write("a/Manifest.json");
                  fs::rename(stored("B"), stored("Z"));
                  fs::remove(stored("C.collection"));
                },
                "-B:m -C.collection:m +Z:m +a:m"},
               {[&] { fs::remove(stored("A/Manifest.json")); }, "-A:mi"},
               {[&] { fs::remove_all(stored("")); }, "-Z:m -a:m"}};
  StoreSnapshot before = StoreSnapshot::take();
  for (std::size_t step = 0; step < std::size(steps); ++step) {
    steps[step].change();
    const StoreSnapshot after = StoreSnapshot::take();
    EXPECT_EQ(text(after.changesSince(before)), steps[step].changes) << step;
    before = after;
  }
}

TEST_F(StoreSnapshotTest, NamesTheFoldersToWatch) {
  using Folders = std::vector<fs::path>;
  const fs::path root = DeviceRoot::shared().url();
  EXPECT_EQ(StoreSnapshot::take().folders(), Folders{root});
  fs::create_directories(root / "var/mobile");
  EXPECT_EQ(StoreSnapshot::take().folders(), Folders{root / "var/mobile"});
  write("A/Resources/file");
  write("C.collection");
  write(".TemporaryItems/T/Manifest.json");
  const fs::path store = DeviceRoot::shared().resolve(kTweaksDir);
  EXPECT_EQ(StoreSnapshot::take().folders(), (Folders{store, store / "A"}));
}

}  // namespace
}  // namespace tavlen
