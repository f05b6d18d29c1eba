#include "tavlen/store/TweakManager.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/store/StoreSnapshot.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Threads.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

constexpr const char* kCollectionManifest =
    R"({"configuration":{"name":"C","color":"darkRed","bundleID":"a.b"},"tweaks":[]})";

class TweakManagerTest : public StoreTest {
 protected:
  fs::path store(const std::string& name, std::string_view bytes) const {
    return root_.write("var/mobile/Library/Application Support/Marrowgleam/Tweaks/" + name, bytes);
  }
  static std::vector<std::string> listed() {
    std::vector<std::string> ids;
    for (const auto& item : TweakManager::allTweaks()) ids.push_back(item->id());
    return ids;
  }
};

TEST_F(TweakManagerTest, ListsWhatOpensInTheOrderOfTheFolder) {
  EXPECT_TRUE(listed().empty()) << "there is no folder";
  std::vector<std::string> good;
  for (const char* name : {"one", "two", "three"}) {
    store(std::string(name) + "/Manifest.json", kTweakManifest);
    store(std::string(name) + ".collection", kCollectionManifest);
    good.insert(good.end(), {name, std::string(name) + ".collection"});
  }
  store("noManifest/Resources/file", "x");
  store("broken/Manifest.json", "{");
  store("folder/Manifest.json/file", "x");
  store("file", kTweakManifest);
  store("has.dot/Manifest.json", kTweakManifest);
  store("broken.collection", "{");
  store("folder.collection/Manifest.json", kTweakManifest);
  store(".tavlen-1-2", kCollectionManifest);
  store(".TemporaryItems/a/Manifest.json", kTweakManifest);
  fs::create_symlink("loop", TweaksDirectory::url() / "loop");
  fs::create_symlink("nowhere", TweaksDirectory::url() / "dangling.collection");
  ASSERT_EQ(::mkfifo((TweaksDirectory::url() / "pipe.collection").c_str(), 0600), 0);
  EXPECT_THAT(listed(), UnorderedElementsAreArray(good));

  std::vector<std::string> order;
  for (const auto& entry : fs::directory_iterator(TweaksDirectory::url())) {
    const std::string name = entry.path().filename();
    if (std::find(good.begin(), good.end(), name) != good.end()) order.push_back(name);
  }
  EXPECT_EQ(listed(), order);

  fs::permissions(TweaksDirectory::url(), fs::perms::none);
  const bool bindsUser = ::access(TweaksDirectory::url().c_str(), R_OK) != 0;
  EXPECT_EQ(listed().empty(), bindsUser);
  fs::permissions(TweaksDirectory::url(), fs::perms::owner_all);
}

TEST_F(TweakManagerTest, ReadsAndWritesThroughTheLinksOfTheDevice) {
  // Absolute links, which name places of the tree and not of this machine: here nothing, there
  // another file.
  const auto tweak = newTweak("A");
  root_.write("kept/Manifest.json", std::string(kTweakManifest));
  const TemporaryFolder machine;
  for (const char* name : {"Manifest.json", "script.objs", "Icon.png"}) {
    fs::remove(tweak->url() / name);
    fs::create_symlink(machine.write(name, "of the machine"), tweak->url() / name);
  }
  EXPECT_THROW(tweak->validate(), TweakFile::Error);
  EXPECT_EQ(tweak->script(), "");
  EXPECT_THAT(listed(), IsEmpty());

  const std::string inTree = machine.path().relative_path();
  fs::create_directories(root_.path() / inTree);
  tweak->writeScript("// s");
  EXPECT_EQ(tweak->script(), "// s");
  tweak->setManifest({});
  EXPECT_THAT(listed(), ElementsAre(tweak->id()));
  EXPECT_THAT(StoreSnapshot::take().ids(), ElementsAre(tweak->id()));
  tweak->writeCustomIcon(Image(1, 1, {1, 2, 3, 255}));
  EXPECT_TRUE(tweak->customIcon());
  tweak->writeCustomIcon(std::nullopt);
  EXPECT_FALSE(fs::is_symlink(tweak->url() / "Icon.png"));
  for (const char* name : {"Manifest.json", "script.objs", "Icon.png"}) {
    EXPECT_EQ(readFile(machine.path() / name), "of the machine");
    EXPECT_TRUE(fs::exists(root_.path() / inTree / name)) << name;
  }

  // Items that are links themselves.
  fs::create_directory_symlink("/kept", TweaksDirectory::url() / "linked");
  fs::create_symlink(machine.write("c", "{"), TweaksDirectory::url() / "c.collection");
  root_.write(inTree + "/c", kCollectionManifest);
  EXPECT_THAT(listed(), UnorderedElementsAre(tweak->id(), "linked", "c.collection"));
  EXPECT_EQ(StoreSnapshot::take().ids().size(), 3U);
  const fs::path archive = TweakManager::export_(*TweakManager::tweakWithID("linked"));
  EXPECT_NO_THROW(TweakManager::decompressAt(archive));
}

TEST_F(TweakManagerTest, ManyBrokenEntriesHideNothing) {
  const std::string good = newTweak("good")->id();
  for (int i = 0; i < 100; ++i) {
    const std::string name = "broken" + std::to_string(i);
    store(i % 2 == 0 ? name + "/Manifest.json" : name + ".collection", "[");
  }
  rlimit former{};
  ::getrlimit(RLIMIT_NOFILE, &former);
  const rlimit tight{40, former.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &tight);
  const std::shared_ptr<void> end(nullptr, [&](void*) { ::setrlimit(RLIMIT_NOFILE, &former); });
  // Wherever the good one comes, what the first listing leaves open is missing to the second.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(listed(), std::vector<std::string>{good});
}

TEST_F(TweakManagerTest, TheNameTellsTheKind) {
  store("T/Manifest.json", kTweakManifest);
  store("C.collection", kCollectionManifest);
  root_.write("elsewhere/Manifest.json", kTweakManifest);
  EXPECT_NE(std::dynamic_pointer_cast<TweakFile>(TweakManager::tweakWithID("T")), nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<TweakCollection>(TweakManager::tweakWithID("C.collection")),
            nullptr);
  EXPECT_EQ(TweakManager::tweakAt(root_.path() / "elsewhere/")->id(), "elsewhere");
  for (const char* id : {"", ".", "..", "../Tweaks/T", "T/", "/T", "T/../T", "T.json",
                         "collection.", "C.collection/"}) {
    EXPECT_EQ(messageOf<TweakManager::Error>([&] { TweakManager::tweakWithID(id); }),
              "Unknown tweak type")
        << id;
  }
  EXPECT_THROW(TweakManager::tweakWithID(std::string_view("T\0", 2)), TweakManager::Error);
  EXPECT_THROW(TweakManager::tweakWithID("collection"), TweakFile::Error);
  EXPECT_THROW(TweakManager::tweakWithID("D.collection"), TweakError);

  const std::vector<std::string_view> tweaks = {"", "0A1B2C3D-0000-4000-8000-00000000000F",
                                                "collection"};
  const std::vector<std::string_view> collections = {".collection", "x.collection"};
  const std::vector<std::string_view> neither = {"a.b", ".", "x.Collection", "x.collection.tvxc"};
  for (const auto& ids : {tweaks, collections, neither}) {
    for (const std::string_view id : ids) {
      EXPECT_EQ(TweakFile::isValidID(id), ids == tweaks) << id;
      EXPECT_EQ(TweakCollection::isValidID(id), ids == collections) << id;
    }
  }
}

TEST_F(TweakManagerTest, ArchivesAreToldByTheirExtension) {
  for (const char* name : {"a.tvx", "/x/a.TVX", "a b.tVxC", "a.zip.tvx", "..tvx"}) {
    EXPECT_TRUE(TweakManager::canHandle(name)) << name;
  }
  for (const char* name : {"", "tvx", "a.tvx2", "a.tv", ".tvx", "a.tvx.zip", "a.", "a.tvx/b"}) {
    EXPECT_FALSE(TweakManager::canHandle(name)) << name;
    EXPECT_THROW(TweakManager::decompressAt(name), TweakManager::Error) << name;
  }
  EXPECT_EQ(storedEntries(), 0);
}

class TweakArchiveTest : public StoreTest {
 protected:
  fs::path archive(const std::string& folder, const std::string& name) const {
    ZIPArchive::zipItem(root_.path() / folder / "Payload", root_.path() / name);
    return root_.path() / name;
  }
};

TEST_F(TweakArchiveTest, ACollectionBringsItsMembers) {
  const auto tweak = newTweak("T");
  const auto collection = newCollection("C");
  collection->updateManifest([&](auto& manifest) { manifest._tweaks = {tweak->id()}; });
  const fs::path file = TweakManager::export_(*collection);
  EXPECT_EQ(file.filename(), "C.tvxc");
  const auto copy = std::dynamic_pointer_cast<TweakCollection>(TweakManager::decompressAt(file));
  ASSERT_NE(copy, nullptr);
  ASSERT_EQ(copy->manifest().tweaks().size(), 1U);
  EXPECT_NE(copy->manifest()._tweaks.front(), tweak->id());

  // A member that does not open is named but does not come along.
  collection->updateManifest([](auto& manifest) { manifest._tweaks = {"nowhere"}; });
  EXPECT_THROW(TweakManager::decompressAt(TweakManager::export_(*collection)), TweakFile::Error);
}

TEST_F(TweakArchiveTest, TheSameFolderMakesTheSameBytes) {
  const auto tweak = newTweak("T");
  const auto collection = newCollection("C");
  collection->updateManifest([&](auto& manifest) { manifest._tweaks = {tweak->id()}; });
  const auto archives = [&](const std::string& folder) {
    std::string bytes;
    for (const OpenedItem& item : {OpenedItem(TweakFile::open(tweak->url())),
                                   OpenedItem(TweakCollection::open(collection->url()))}) {
      std::vector<TweakFile::Opened> members;
      if (item.collection()) members = item.collection()->manifest.openedTweaks();
      const fs::path work = root_.path() / (folder + item.item()->id());
      fs::create_directory(work);
      bytes += readFile(TweakManager::exportOpened(item, members, work));
    }
    return bytes;
  };
  const fs::path resources = tweak->resourcesDir();
  for (const char* name : {"a", "b", "c"}) replaceFile(resources / name, name);
  const std::string first = archives("first");
  fs::remove(resources / "a");
  replaceFile(resources / "a", "a");
  for (const auto& entry : fs::recursive_directory_iterator(tweak->url())) {
    fs::last_write_time(entry, fs::file_time_type::clock::now() - std::chrono::hours(1000));
  }
  const mode_t mask = ::umask(022);
  ::umask(mask == 022 ? 027 : 022);
  EXPECT_TRUE(archives("second") == first);
  ::umask(mask);
}

TEST_F(TweakArchiveTest, NamesBecomeFileNames) {
  std::string longName = "x";
  for (int i = 0; i < 200; ++i) longName += "\xC3\xBC";
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},  // the identifier
      {":/", "--"},
      {std::string("a\0b", 3), "a-b"},
      {"..", ".."},
      {"n.tvx", "n.tvx"},
      {longName, longName.substr(0, 251)},
      {longName.substr(1), longName.substr(1, 250)}};
  for (const auto& [name, stem] : rows) {
    const auto tweak = newTweak(name);
    const fs::path file = TweakManager::export_(*tweak);
    EXPECT_EQ(file.filename().string(), (stem.empty() ? tweak->id() : stem) + ".tvx");
    EXPECT_TRUE(TweakManager::canHandle(file));
    EXPECT_EQ(TweakManager::decompressAt(file)->genericManifest().genericConfiguration().name(),
              name);
  }
}

TEST_F(TweakArchiveTest, ABrokenArchiveLeavesNothing) {
  root_.write("file/Payload", "x");
  root_.write("empty/Payload/Resources/r", "x");
  root_.write("broken/Payload/Manifest.json", "{");
  root_.write("other/Else/Manifest.json", kTweakManifest);
  ZIPArchive::zipItem(root_.path() / "other/Else", root_.path() / "other.tvx");
  root_.write("none.tvx", "no archive");
  const fs::path file = archive("file", "file.tvx");
  for (const fs::path& refused : {file, root_.path() / "other.tvx"}) {
    EXPECT_EQ(thrown<TweakFile::Error>([&] { TweakManager::decompressAt(refused); }),
              TweakFile::Error::notFound())
        << refused;
  }
  EXPECT_THROW(TweakManager::decompressAt(archive("empty", "empty.TVX")), TweakFile::Error);
  EXPECT_THROW(TweakManager::decompressAt(archive("empty", "empty.tvxc")), TweakError);
  EXPECT_THROW(TweakManager::decompressAt(archive("broken", "broken.tvx")), DecodingError);
  EXPECT_THROW(TweakManager::decompressAt(root_.path() / "none.tvx"), ZIPError);
  EXPECT_THROW(TweakManager::decompressAt(root_.path() / "nowhere.tvx"), std::exception);
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_FALSE(leftTemporaryItems());
}

constexpr int kThreads = 8;
constexpr int kRounds = 12;

class StoreThreadsTest : public testing::Test {
 protected:
  StoreThreadsTest() { DeviceRoot::setShared(DeviceRoot(root_.path())); }
  ~StoreThreadsTest() override { DeviceRoot::setShared(DeviceRoot()); }

  static void addOne(TweakFile::Manifest& manifest) {
    manifest.configuration.bundleID += "+";
    manifest._hooks.emplace_back();
  }
  /// Imports a collection of two members, under names that only this call uses.
  std::string import(int thread, int round) const {
    const std::string name = "in" + std::to_string(thread) + "-" + std::to_string(round);
    constexpr const char* kConfiguration =
        R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},)";
    root_.write(name + "/Manifest.json", std::string(kConfiguration) + R"("tweaks":["A","B"]})");
    for (const char* member : {"A", "B"}) {
      root_.write(name + "/Tweaks/" + member + "/Manifest.json",
                  std::string(kConfiguration) + R"("overrides":[],"hooks":[]})");
    }
    return TweakCollection::handlePayloadAt(root_.path() / name)->id();
  }

  const TemporaryFolder root_{memoryFolder()};
};

// One edit under the poster's lock, one under the tweak's own, a creation, a deletion, an import,
// an icon and a listing a round; every thread has a handle of its own on the first tweak.
TEST_F(StoreThreadsTest, NoEditUnderALockIsLost) {
  const auto create = [] {
    return TweakFile::create("shared", TweakColor::darkRed, TweakGlyph::default_(), "");
  };
  const auto byPoster = create();
  const auto byOwnLock = create();
  std::atomic<int> manifestDiffs = 0;
  const auto token = NotificationCenter::default_().addObserver(
      std::string(kTweaksDidUpdateNotification), nullptr, [&](const Notification& notification) {
        const auto& diffs = std::any_cast<const TweakDiffs&>(notification.userInfo->at("diffs"));
        if (nameOf(*diffs.at(0)) == "updateManifest") ++manifestDiffs;
      });
  std::atomic<std::size_t> resolvedMembers = 0;
  const auto work = [&](int thread) {
    const auto handle = TweakFile::at(byPoster->url());
    for (int round = 0; round < kRounds; ++round) {
      tweakPoster().performWithoutNotifications([&] { handle->updateManifest(addOne); });
      {
        const std::lock_guard lock(byOwnLock->recursiveLock);
        byOwnLock->updateManifest(addOne);
      }
      handle->setCustomIcon(Image(1, 1, {0, 0, 0, 255}));
      const auto brief = create();
      EXPECT_EQ(brief->manifest().configuration.name, "shared");
      const auto collection = TweakManager::tweakWithID(import(thread, round));
      resolvedMembers +=
          dynamic_cast<const TweakCollection&>(*collection).manifest().tweaks().size();
      EXPECT_GE(TweakManager::allTweaks().size(), 3U);
      brief->remove();
      if (round % 2 == 0) collection->remove();
    }
  };
  inThreads(kThreads, work);
  NotificationCenter::default_().removeObserver(token);

  constexpr std::size_t kEdits = std::size_t{kThreads} * kRounds;
  for (const auto& tweak : {byPoster, byOwnLock}) {
    EXPECT_EQ(tweak->manifest()._hooks.size(), kEdits);
    EXPECT_EQ(tweak->manifest().configuration.bundleID, std::string(kEdits, '+'));
  }
  EXPECT_EQ(resolvedMembers, 2 * kEdits);
  EXPECT_LE(manifestDiffs, static_cast<int>(kEdits)) << "what was silenced was posted";
  EXPECT_EQ(TweakManager::allTweaks().size(), 2 + 2 * kEdits + kEdits / 2);
}

class StoreSnapshotTest : public StoreTest {
 protected:
  void write(const std::string& name) const {
    root_.write(std::string(kTweaksDir).substr(1) + "/" + name, "text");
  }
  static fs::path stored(const std::string& name) { return TweaksDirectory::url() / name; }
};

/// A change's kind by its sign, and its documents by their first letters: "+T:msir".
std::string text(const std::vector<StoreSnapshot::Change>& changes) {
  std::string text;
  for (const StoreSnapshot::Change& change : changes) {
    text += std::string(text.empty() ? "" : " ") + "+~-"[static_cast<int>(change.kind)] +
            change.id + ":";
    for (const auto document : change.documents) text += "msir"[static_cast<int>(document)];
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
                "~A:r"},
               {[&] { write("A/Resources/deep/.hidden"); }, ""},
               {[&] { write("A/Resources/deep/file"); }, "~A:r"},
               {[&] { replaceFile(stored("A/Resources/file"), "text"); }, "~A:r"},
               {[&] {
                  write("a/Manifest.json");
                  fs::rename(stored("B"), stored("Z"));
                  fs::remove(stored("C.collection"));
                },
                "-B:m -C.collection:m +Z:m +a:m"},
               {[&] { fs::remove(stored("A/Manifest.json")); }, "-A:mir"},
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
  EXPECT_EQ(StoreSnapshot::take().folders(), (Folders{store, store / "A", store / "A/Resources"}));
}

}  // namespace
}  // namespace tavlen
