#include "tavlen/foundation/FileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>

namespace tavlen {
namespace {

using namespace std::string_literals;

class FileSystemTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavlen-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path write(const std::string& bytes) const {
    std::ofstream(folder_ / "f", std::ios::binary) << bytes;
    return folder_ / "f";
  }
  template <class Body>
  static int errorOf(const std::filesystem::path& path, Body body) {
    try {
      body(path);
    } catch (const std::system_error& error) {
      EXPECT_NE(std::string(error.what()).find(path.string()), std::string::npos) << error.what();
      return error.code().value();
    }
    return 0;
  }

  std::filesystem::path folder_;
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
    int utf8Error;
  } rows[] = {
      {"", 0, "", 0},
      {"caf\xC3\xA9", 0, "caf\xC3\xA9", 0},
      {"\xEF\xBB\xBFz", 0, "z", 0},
      {"\xFE\xFF\0z\xD8\x3D\xDE\0"s, 0, "z\xF0\x9F\x98\x80", EILSEQ},
      {"\xFF\xFEz\0"s, 0, "z", EILSEQ},
      {"\xFF\xFE\0\0z\0\0\0"s, 0, "z", EILSEQ},
      {"\0\0\xFE\xFF\0\0\0z"s, 0, "z", EILSEQ},
      {"\xFF\xFEz"s, EILSEQ, "", EILSEQ},               // half a unit
      {"\xFE\xFF\xD8\x3D\0z"s, EILSEQ, "", EILSEQ},     // lone surrogate
      {"\0\0\xFE\xFF\0\x11\0\0"s, EILSEQ, "", EILSEQ},  // above U+10FFFF
      {"caf\xE9", EILSEQ, "", EILSEQ},                  // Latin-1
  };
  for (const auto& row : rows) {
    const std::filesystem::path path = write(row.bytes);
    EXPECT_EQ(errorOf(path, readText), row.textError) << testing::PrintToString(row.bytes);
    EXPECT_EQ(errorOf(path, readUTF8), row.utf8Error) << testing::PrintToString(row.bytes);
    if (row.textError == 0) {
      EXPECT_EQ(readText(path), row.text);
    }
    if (row.utf8Error == 0) {
      EXPECT_EQ(readUTF8(path), row.text);
    }
  }
}

TEST(PlainComponent, keepsAPathInItsFolder) {
  for (const char* name : {"a", "...", ".a", "a b", "é", "-"}) EXPECT_TRUE(isPlainComponent(name));
  for (const std::string& name : {""s, "."s, ".."s, "/"s, "a/b"s, "a/"s, "a\0b"s}) {
    EXPECT_FALSE(isPlainComponent(name)) << testing::PrintToString(name);
  }
}

}  // namespace
}  // namespace tavlen
