#include "tavlen/tweaks/TweakFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstring>
#include <regex>
#include <stdexcept>
#include <thread>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweakPoster.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using TweakFileTest = StoreTest;

TEST_F(TweakFileTest, OpensAFolderWithAManifest) {
  root_.write("A B.tweak/Manifest.json", kTweakManifest);
  fs::create_directory(root_.path() / "A B.tweak/R");
  fs::create_symlink("A B.tweak", root_.path() / "link");
  const std::pair<const char*, const char*> cases[] = {
      {"A B.tweak", "A B.tweak"},   {"A B.tweak/", "A B.tweak"}, {"link", "link"},
      {"A B.tweak/.", "A B.tweak"}, {"link/./", "link"},         {"A B.tweak/R/../", "A B.tweak"}};
  for (const auto& [name, id] : cases) {
    const auto tweak = TweakFile::at(root_.path() / name);
    EXPECT_EQ(tweak->url(), root_.path() / id);
    EXPECT_EQ(tweak->id(), id);
    EXPECT_EQ(tweak->resourcesDir(), root_.path() / id / "Resources/");
    EXPECT_EQ(tweak->executablesDir(), root_.path() / id / "Executables/");
    EXPECT_EQ(tweak->manifest().configuration.name, "N");
  }
}

TEST_F(TweakFileTest, SaysWhatIsMissingOrBroken) {
  root_.write("file", "");
  fs::create_directories(root_.path() / "empty");
  root_.write("broken/Manifest.json", "{");
  root_.write("wrong/Manifest.json", R"({"configuration":[]})");
  fs::create_directories(root_.path() / "folder/Manifest.json");
  const std::pair<const char*, const char*> cases[] = {
      {"file", "Not found"},
      {"nowhere", "Not found"},
      {"empty", "Missing Manifest.json"},
      {"wrong", "configuration: expected a dictionary, found an array"}};
  for (const auto& [name, error] : cases) {
    EXPECT_EQ(messageOf([&, name = name] { TweakFile::at(root_.path() / name); }), error) << name;
  }
  EXPECT_THROW(TweakFile::at(root_.path() / "broken"), DecodingError);
  EXPECT_THROW(TweakFile::at(root_.path() / "folder"), std::system_error);
  EXPECT_THROW(TweakFile::at(""), TweakFile::Error);
}

TEST_F(TweakFileTest, HoldsTheLimitsOfItsDocument) {
  const std::string begin = std::string(kTweakManifest, std::strlen(kTweakManifest) - 2);
  std::string nulls = begin;
  for (std::size_t i = 0; i < limits::kHooks; ++i) nulls += i == 0 ? "null" : ",null";
  const std::string hooks = "more than 100000 hooks";
  const std::string bytes = "more than 16777216 bytes";
  root_.write("T/Manifest.json", nulls + "]}");
  const auto tweak = TweakFile::at(root_.path() / "T");
  EXPECT_EQ(tweak->manifest()._hooks.size(), limits::kHooks);
  const auto adding = [&] { tweak->updateManifest([](auto& m) { m._hooks.emplace_back(); }); };
  EXPECT_THAT(messageOf<EncodingError>(adding), testing::HasSubstr(hooks));
  root_.write("T/Manifest.json", nulls + ",null]}");
  EXPECT_THAT(messageOf<DecodingError>([&] { tweak->validate(); }), testing::HasSubstr(hooks));
  EXPECT_THAT(messageOf<DecodingError>([&] { tweak->manifest(); }), testing::HasSubstr(hooks));

  const auto write = [&](std::size_t size) {
    root_.write("T/Manifest.json", begin + std::string(size - begin.size() - 2, ' ') + "]}");
  };
  write(limits::kDocumentBytes);
  EXPECT_NO_THROW(tweak->validate());
  write(limits::kDocumentBytes + 1);
  EXPECT_THAT(messageOf([&] { tweak->manifest(); }), testing::HasSubstr(bytes));
  root_.write("T/Manifest.json", kTweakManifest);
  const auto naming = [&](std::size_t size) {
    tweak->updateManifest([&](auto& m) { m.configuration.name = std::string(size, 'n'); });
  };
  const std::size_t longest = limits::kDocumentBytes - std::strlen(kTweakManifest) + 1;
  EXPECT_THAT(messageOf<EncodingError>([&] { naming(longest + 1); }), testing::HasSubstr(bytes));
  EXPECT_EQ(tweak->manifest().configuration.name, "N");
  naming(longest);
  EXPECT_EQ(tweak->manifest().configuration.name.size(), longest);
}

TEST_F(TweakFileTest, AScriptThatCannotBeReadCountsAsEmpty) {
  root_.write("bytes/Manifest.json", kTweakManifest);
  root_.write("bytes/script.objs", "fine(); \xFF");
  root_.write("folder/Manifest.json", kTweakManifest);
  fs::create_directories(root_.path() / "folder/script.objs");
  root_.write("link/Manifest.json", kTweakManifest);
  fs::create_symlink("nowhere", root_.path() / "link/script.objs");
  for (const char* name : {"bytes", "folder", "link"}) {
    const auto tweak = TweakFile::at(root_.path() / name);
    EXPECT_EQ(tweak->script(), "") << name;
    EXPECT_THROW(tweak->readScript(), std::system_error) << name;
  }
}

using testing::ElementsAre;
using testing::IsEmpty;

const Image& red() {
  static const Image image(1, 1, {255, 0, 0, 255});
  return image;
}

using TweakFileEditingTest = StoreTest;

TEST_F(TweakFileEditingTest, ANewTweakIsWholeAndSilent) {
  const TweakGlyph glyph = TweakGlyph::default_();
  const auto tweak = TweakFile::create("Näme", TweakColor::lightGreen, glyph, "com.example.app");
  EXPECT_TRUE(
      std::regex_match(tweak->id(), std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")));
  EXPECT_EQ(tweak->url().parent_path(), TweaksDirectory::url());
  EXPECT_EQ(std::distance(fs::directory_iterator(tweak->url()), {}), 3);
  EXPECT_TRUE(fs::is_empty(tweak->resourcesDir()));
  EXPECT_TRUE(fs::is_empty(tweak->executablesDir()));
  TweakFile::Manifest expected;
  expected.configuration = {"Näme", TweakColor::lightGreen, "com.example.app", glyph};
  EXPECT_EQ(tweak->manifest(), expected);
  EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(TweakFileEditingTest, AFailedCreationLetsOthersPostAgain) {
  root_.write("var/mobile/Library/Application Support/Marrowgleam", "a file");
  EXPECT_THROW(newTweak("A"), std::system_error);
  EXPECT_THROW(newCollection("A"), std::system_error);
  std::thread([] { EXPECT_TRUE(tweakPoster().shouldPostNotifications); }).join();
  bool posts = false;
  std::thread([&] {
    tweakPoster().performNotificationPostingOperation([&] { posts = true; });
  }).join();
  EXPECT_TRUE(posts);
}

TEST_F(TweakFileEditingTest, EveryWriteIsAnnouncedOnce) {
  const auto tweak = newTweak("A");
  tweak->updateManifest([](auto& manifest) { manifest.configuration.name = "B"; });
  EXPECT_EQ(TweakFile::at(tweak->url())->manifest().configuration.name, "B");
  tweak->setManifest(tweak->manifest());
  EXPECT_THAT(announced(), ElementsAre("updateManifest", "updateManifest"));

  EXPECT_THROW(tweak->updateManifest([](auto& manifest) {
    manifest.configuration.name = "C";
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_EQ(tweak->manifest().configuration.name, "B");

  tweak->setCustomIcon(red());
  EXPECT_EQ(tweak->customIcon(), red());
  tweak->setCustomIcon(std::nullopt);
  tweak->setCustomIcon(std::nullopt);
  tweak->writeCustomIcon(red());
  tweak->writeCustomIcon(std::nullopt);
  tweak->writeCustomIcon(std::nullopt);
  EXPECT_EQ(tweak->customIcon(), std::nullopt);
  EXPECT_THAT(announced(), testing::AllOf(testing::SizeIs(6), testing::Each("updateIcon")));

  tweak->setScript("a();");
  tweak->writeScript("\xC3\xBC");
  EXPECT_EQ(tweak->script(), "\xC3\xBC");
  tweakPoster().performWithoutNotifications([&] {
    tweak->setManifest(tweak->manifest());
    tweak->setCustomIcon(red());
  });
  EXPECT_THAT(announced(), IsEmpty()) << "scripts, or what was silenced";
}

TEST_F(TweakFileEditingTest, WhatCannotBeWrittenIsSwallowedOrThrown) {
  const auto tweak = newTweak("A");
  tweak->writeScript("old");
  EXPECT_THROW(tweak->writeScript("\xFF"), std::system_error);
  EXPECT_EQ(tweak->script(), "old");
  for (const char* name : {"Icon.png", "script.objs", "Manifest.json"}) {
    fs::remove(tweak->url() / name);
    fs::create_directories(tweak->url() / name / "inner");
  }
  tweak->setScript("new");
  tweak->setCustomIcon(red());
  tweak->setCustomIcon(std::nullopt);
  EXPECT_THAT(announced(), ElementsAre("updateIcon", "updateIcon"));
  EXPECT_THROW(tweak->writeScript("new"), std::system_error);
  EXPECT_THROW(tweak->writeCustomIcon(red()), std::system_error);
  EXPECT_THROW(tweak->writeCustomIcon(std::nullopt), std::system_error);
  EXPECT_THROW(tweak->setManifest({}), std::system_error);
  EXPECT_THAT(announced(), IsEmpty());
  EXPECT_EQ(tweak->customIcon(), std::nullopt);
}

TEST_F(TweakFileEditingTest, AnEditLeavesTheRestOfTheDocument) {
  const std::string document =
      R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[null,)"
      R"({"className":"C","selector":"s","signature":"v16@0:8","isClassMethod":false,"args":{}},null]})";
  const auto tweak = newTweak("A");
  std::ofstream(tweak->url() / "Manifest.json") << document;
  fs::rename(tweak->url() / "Manifest.json", root_.path() / "elsewhere.json");
  fs::create_symlink((root_.path() / "elsewhere.json").lexically_relative(tweak->url()),
                     tweak->url() / "Manifest.json");
  fs::permissions(root_.path() / "elsewhere.json", fs::perms::owner_read | fs::perms::owner_write);
  tweak->updateManifest([](auto&) {});
  EXPECT_EQ(readFile(tweak->url() / "Manifest.json"), document);
  EXPECT_TRUE(fs::is_symlink(tweak->url() / "Manifest.json"));
  EXPECT_EQ(fs::status(root_.path() / "elsewhere.json").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(TweakFileEditingTest, ADeletedTweakStaysDeletedUnderAnOpenHandle) {
  const auto tweak = newTweak("A");
  const auto other = TweakFile::at(tweak->url());
  tweak->delete_();
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_FALSE(leftTemporaryItems());
  EXPECT_THAT(announced(), IsEmpty()) << "announcing it is the caller's";

  other->delete_();
  EXPECT_THROW(other->remove(), std::system_error);
  EXPECT_THROW(other->manifest(), TweakFile::Error);
  EXPECT_THROW(other->setManifest({}), std::system_error);
  EXPECT_THROW(other->writeScript(""), std::system_error);
  EXPECT_FALSE(other->isShownInSearchFor("A"));
  EXPECT_THROW((void)other->compareTo(*other), TweakFile::Error);
  EXPECT_THROW(other->preparePayloadIn(root_.path() / "P"), std::system_error);
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_EQ(thrown<TweakFile::Error>([&] { other->validate(); }), TweakFile::Error::notFound());
}

TEST_F(TweakFileEditingTest, DeletionTakesNothingElseAlong) {
  root_.write("mine/T/Manifest.json", kTweakManifest);
  root_.write("mine/closed/Manifest.json", kTweakManifest);
  root_.write("mine/closed/Resources/inner/file", "x");
  fs::permissions(root_.path() / "mine/closed/Resources/inner", fs::perms::none);
  fs::create_symlink("T", root_.path() / "mine/link");
  TweakFile::at(root_.path() / "mine/link/")->remove();
  EXPECT_FALSE(fs::is_symlink(root_.path() / "mine/link"));
  EXPECT_TRUE(fs::exists(root_.path() / "mine/T/Manifest.json"));
  TweakFile::at(root_.path() / "mine/closed")->remove();
  TweakFile::at(root_.path() / "mine/T")->remove();
  EXPECT_TRUE(fs::is_empty(root_.path() / "mine")) << "temporary items, or a closed folder";

  const auto tweak = newTweak("A");
  fs::permissions(TweaksDirectory::url(), fs::perms::owner_read | fs::perms::owner_exec);
  if (::geteuid() == 0) GTEST_SKIP() << "permissions do not bind this user";
  EXPECT_THROW(tweak->remove(), std::system_error);
  EXPECT_EQ(tweak->manifest().configuration.name, "A");
  fs::permissions(TweaksDirectory::url(), fs::perms::owner_all);
}

TEST_F(TweakFileEditingTest, GenericDiffsAreCreationsAndDeletions) {
  const auto tweak = newTweak("A");
  for (const auto mode : {GenericTweakDiffMode::create, GenericTweakDiffMode::delete_}) {
    EXPECT_EQ(tweak->diffFor(mode)->genericMode(), mode);
    EXPECT_EQ(newCollection("B")->diffFor(mode)->genericMode(), mode);
  }
  EXPECT_EQ(tweak->diffFor(GenericTweakDiffMode::create)->genericTweak(), tweak);
  EXPECT_EQ(TweakFile::Diff(tweak, TweakFile::Diff::UpdateIcon{}).genericMode(), std::nullopt);
}

TEST_F(TweakFileEditingTest, PayloadsMoveIntoTheStoreWholeOrNotAtAll) {
  root_.write("in/good/Manifest.json", kTweakManifest);
  root_.write("in/good/Resources/a", "x");
  root_.write("in/empty/file", "");
  root_.write("in/broken/Manifest.json", "{");
  fs::create_symlink("good", root_.path() / "in/link");
  const auto refusal = [&](const char* name) {
    return messageOf<TweakFile::Error>(
        [&] { TweakFile::handlePayloadAt(root_.path() / "in" / name); });
  };
  for (const char* name : {"nowhere", "empty/file", "link", "link/"}) {
    EXPECT_EQ(refusal(name), "Not found") << name;
  }
  EXPECT_EQ(refusal("empty"), "Missing Manifest.json");
  EXPECT_THROW(TweakFile::handlePayloadAt(root_.path() / "in/broken"), DecodingError);
  EXPECT_EQ(storedEntries(), 0);

  const auto tweak = TweakFile::handlePayloadAt(root_.path() / "in/good/");
  EXPECT_EQ(tweak->url().parent_path(), TweaksDirectory::url());
  EXPECT_EQ(tweak->manifest().configuration.name, "N");
  EXPECT_EQ(readFile(tweak->resourcesDir() / "a"), "x");
  EXPECT_FALSE(fs::exists(root_.path() / "in/good"));
  EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(TweakFileEditingTest, PayloadsAreCopiesWithoutTemporaryFiles) {
  const auto tweak = newTweak("A");
  tweak->writeScript("s");
  std::ofstream(tweak->url() / ".tavlen-1-2") << "left over";
  std::ofstream(tweak->resourcesDir() / "a") << "x";
  fs::create_symlink(DeviceRoot::shared().devicePath(tweak->url()), root_.path() / "link");
  for (const auto& [source, copy] : {std::pair(tweak->url(), "P"), {root_.path() / "link", "Q"}}) {
    TweakFile::at(source)->preparePayloadIn(root_.path() / copy);
    EXPECT_TRUE(fs::is_directory(fs::symlink_status(root_.path() / copy)));
    EXPECT_EQ(TweakFile::at(root_.path() / copy)->manifest(), tweak->manifest());
    EXPECT_EQ(readFile(root_.path() / copy / "Resources/a"), "x");
    EXPECT_EQ(readFile(root_.path() / copy / "script.objs"), "s");
    EXPECT_FALSE(fs::exists(root_.path() / copy / ".tavlen-1-2"));
    EXPECT_THROW(tweak->preparePayloadIn(root_.path() / copy), std::system_error);
  }
  fs::create_directories(root_.path() / "taken");
  EXPECT_THROW(tweak->preparePayloadIn(root_.path() / "taken"), std::system_error);
  EXPECT_TRUE(fs::is_empty(root_.path() / "taken"));
}

}  // namespace
}  // namespace tavlen
