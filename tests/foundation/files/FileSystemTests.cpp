#include "tavlen/foundation/files/FileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "tavlen/foundation/files/FileReplacement.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_literals;

class FileSystemTest : public testing::Test {
 protected:
  std::filesystem::path write(const std::string& bytes) const {
    return temporary_.write("f", bytes);
  }
  template <class Body>
  static int errorOf(const std::filesystem::path& path, Body body) {
    const auto error = thrown<std::system_error>([&] { body(path); });
    if (!error) return 0;
    EXPECT_NE(std::string(error->what()).find(path.string()), std::string::npos) << error->what();
    return error->code().value();
  }

  const TemporaryFolder temporary_;
  const std::filesystem::path folder_ = temporary_.path();
};

TEST_F(FileSystemTest, readsOnlyRegularFiles) {
  const std::string large(100'000, 'x');
  EXPECT_EQ(readFile(write(large)), large);
  EXPECT_EQ(readFile(write("")), "");
  std::filesystem::create_symlink("f", folder_ / "link");
  EXPECT_EQ(readFile(folder_ / "link"), "");
  // Its size is 0 as long as nobody reads it.
  EXPECT_FALSE(readFile("/proc/self/stat").empty());

  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(errorOf(folder_ / "pipe", readFile), EINVAL);
  EXPECT_EQ(errorOf("/dev/zero", readFile), EINVAL);
  EXPECT_EQ(errorOf(folder_, readFile), EISDIR);
  EXPECT_EQ(errorOf(folder_ / "missing", readFile), ENOENT);
}

TEST_F(FileSystemTest, detectsTheEncodingOfText) {
  const struct {
    std::string bytes;
    int textError;
    std::string text;
  } rows[] = {
      {"", 0, ""},
      {"caf\xC3\xA9", 0, "caf\xC3\xA9"},
      {"\xEF\xBB\xBFz", 0, "z"},
      {"\xFE\xFF\0z\xD8\x3D\xDE\0"s, 0, "z\xF0\x9F\x98\x80"},
      {"\xFF\xFEz\0"s, 0, "z"},
      {"\xFF\xFE\0\0z\0\0\0"s, 0, "z"},
      {"\0\0\xFE\xFF\0\0\0z"s, 0, "z"},
      {"\xFF\xFEz"s, EILSEQ, ""},               // half a unit
      {"\xFE\xFF\xD8\x3D\0z"s, EILSEQ, ""},     // lone surrogate
      {"\0\0\xFE\xFF\0\x11\0\0"s, EILSEQ, ""},  // above U+10FFFF
      {"caf\xE9", EILSEQ, ""},                  // Latin-1
  };
  for (const auto& row : rows) {
    const std::filesystem::path path = write(row.bytes);
    EXPECT_EQ(errorOf(path, readText), row.textError) << testing::PrintToString(row.bytes);
    if (row.textError == 0) {
      EXPECT_EQ(readText(path), row.text);
    }
  }
}

TEST_F(FileSystemTest, refusesFilesThatNoDocumentIsAsLargeAs) {
  EXPECT_EQ(readFileUpTo(write("abc"), 3), "abc");
  EXPECT_EQ(readFileUpTo(folder_ / "f", 2), std::nullopt);
  EXPECT_EQ(readFileUpTo("/proc/self/stat", 2), std::nullopt);  // it grows while it is read
  std::filesystem::resize_file(write(""), std::uintmax_t{1} << 40);
  EXPECT_EQ(errorOf(folder_ / "f", readFile), EFBIG);
}

TEST_F(FileSystemTest, findsStoredNamesInsideTheirFolderOnly) {
  std::filesystem::create_directories(folder_ / "in" / "sub");
  std::filesystem::create_symlink("..", folder_ / "in" / "out");
  std::filesystem::create_symlink("sub", folder_ / "in" / "same");
  for (const std::string& name : {"a"s, "sub/a"s, "sub/../a"s, "same/a"s, "missing/a"s, "..a"s}) {
    EXPECT_TRUE(pathInside(folder_ / "in", name)) << name;
  }
  for (const std::string& name :
       {""s, "/etc"s, ".."s, "../in2/a"s, "sub/../../a"s, "out/f"s, "."s, "a\0b"s}) {
    EXPECT_FALSE(pathInside(folder_ / "in", name)) << testing::PrintToString(name);
  }
}

TEST_F(FileSystemTest, replacesFilesWholeOrNotAtAll) {
  const std::filesystem::path file = write("old");
  std::filesystem::permissions(
      file, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  const std::filesystem::path leftOver = folder_ / ".tavlen-1-2";
  std::ofstream(leftOver) << "of a crash";
  const std::filesystem::path young = folder_ / ".tavlen-3-4";
  std::ofstream(young) << "of another at work";
  std::filesystem::last_write_time(
      leftOver, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  { const FileReplacement dropped(file, "never committed"); }
  EXPECT_FALSE(std::filesystem::exists(leftOver));
  EXPECT_TRUE(std::filesystem::exists(young));
  EXPECT_EQ(readFile(file), "old");
  replaceFile(file, "new");
  EXPECT_EQ(readFile(file), "new");
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

  std::filesystem::create_directory(folder_ / "other");
  std::filesystem::create_symlink("other/target", folder_ / "link");  // to nothing yet
  replaceFile(folder_ / "link", "through the link");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link"));
  EXPECT_EQ(readFile(folder_ / "other" / "target"), "through the link");

  std::filesystem::create_symlink("loop", folder_ / "loop");
  const auto replace = [](const std::filesystem::path& path) { replaceFile(path, "x"); };
  EXPECT_EQ(errorOf(folder_ / "loop", replace), ELOOP);
  EXPECT_EQ(errorOf(folder_ / "other", replace), EISDIR);
  EXPECT_EQ(errorOf(folder_ / "missing" / "f", replace), ENOENT);
}

TEST(PlainComponent, keepsAPathInItsFolder) {
  for (const char* name : {"a", "...", ".a", "a b", "é", "-"}) EXPECT_TRUE(isPlainComponent(name));
  for (const std::string& name : {""s, "."s, ".."s, "/"s, "a/b"s, "a/"s, "a\0b"s}) {
    EXPECT_FALSE(isPlainComponent(name)) << testing::PrintToString(name);
  }
}

}  // namespace
}  // namespace tavlen
