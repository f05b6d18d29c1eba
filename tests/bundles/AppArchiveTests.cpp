#include "tavlen/bundles/AppArchive.h"

#include <gmock/gmock.h>

#include "tavlen/bundles/IPA.h"
#include "tests/support/AppPlist.h"
#include "tests/support/MachOFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

class AppArchiveTest : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& bytes) const {
    folder_.write("Payload/" + name, bytes);
  }
  AppArchive archive() {
    const fs::path file = folder_.path() / std::to_string(++count_);
    ZIPArchive::zipItem(folder_.path() / "Payload", file);
    return AppArchive(file);
  }
  template <class Error>
  std::string errorOfArchive() {
    const auto error = thrown<Error>([&] { archive(); });
    return error ? error->description() : "";
  }

  TemporaryFolder folder_;
  int count_ = 0;
};

TEST_F(AppArchiveTest, UnpacksTheFilesThatAreAskedFor) {
  write("readme", "next to the app");
  write("Notes.app/Info.plist", appPlist("com.example.notes", "Notes"));
  write("Notes.app/Notes", macho::thin(2));
  write("Notes.app/Frameworks/Kit.framework/Kit", macho::fat({macho::thin(6)}));
  write("Notes.app/old", macho::thin32(2));
  write("Notes.app/Icon.png", "no image");
  AppArchive app = archive();
  EXPECT_EQ(app.bundle(), "Payload/Notes.app");
  EXPECT_TRUE(app.contains("Icon.png"));
  EXPECT_FALSE(app.contains("Frameworks") || app.contains("readme"));
  EXPECT_THAT(app.images([](const ZIPError&) {}),
              testing::ElementsAre("Frameworks/Kit.framework/Kit", "Notes", "old"));
  const auto ipa = app.unpack({"Notes", "Notes"}, folder_.path() / "out");
  EXPECT_EQ(ipa->mainExecutable()->path(), folder_.path() / "out/Payload/Notes.app/Notes");
  EXPECT_EQ(std::distance(fs::directory_iterator(ipa->appDir()), {}), 2);
}

TEST_F(AppArchiveTest, RefusesAnArchiveWithoutExactlyOneApp) {
  write(".app/x", "");
  write("Notes.app", "a file");
  EXPECT_EQ(errorOfArchive<AppArchive::Error>(), "The folder Payload has no app");
  write("A.app/x", "");
  EXPECT_EQ(thrown<IPA::Error>([&] { archive().unpack({}, folder_.path() / "out"); })->which(),
            IPA::Error::Case::invalidIPA);
  write("B.app/x", "");
  EXPECT_EQ(errorOfArchive<AppArchive::Error>(),
            "There are several apps: Payload/A.app and Payload/B.app");
}

}  // namespace
}  // namespace tavlen
