#include "tavlen/store/TweakManager.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/store/StoreSnapshot.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

namespace fs = std::filesystem;

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

}  // namespace
}  // namespace tavlen
