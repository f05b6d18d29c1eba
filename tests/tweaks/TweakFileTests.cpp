#include "tavlen/tweaks/TweakFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

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

TEST_F(TweakFileTest, ReadsTheFolderAnewEachTime) {
  const fs::path manifest = root_.write("T/Manifest.json", kTweakManifest);
  const auto tweak = TweakFile::at(root_.path() / "T");
  EXPECT_EQ(tweak->readScript(), std::nullopt);
  EXPECT_EQ(tweak->script(), "");
  root_.write("T/script.objs", "one();\r\n");
  EXPECT_EQ(tweak->readScript(), "one();\r\n");
  fs::remove(manifest);
  EXPECT_EQ(thrown<TweakFile::Error>([&] { tweak->manifest(); }),
            TweakFile::Error::missing("Manifest.json"));
  fs::remove_all(root_.path() / "T");
  EXPECT_THROW(tweak->validate(), TweakFile::Error);
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

}  // namespace
}  // namespace tavlen
