#include <gtest/gtest.h>

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"
#include "tests/support/MachOFile.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

using macho::bigWord;
using macho::fat;
using macho::thin;
using macho::thin32;

constexpr std::uint32_t kX86_64 = 0x01000007;

class MachOFileTest : public testing::Test {
 protected:
  std::uint32_t fileType(const std::string& bytes) const {
    const RandomAccessFile file(folder_.write("image", bytes));
    const auto read = MachOFile::read(file);
    return read ? static_cast<std::uint32_t>(read->preferred().fileType) : 0;
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(MachOFileTest, ReadsThinFiles) {
  EXPECT_EQ(fileType(thin(2)), 2U);
  EXPECT_EQ(fileType(thin32(8)), 8U);
  EXPECT_EQ(fileType(thin(10)), 10U);
  const RandomAccessFile file(TemporaryFolder().write("a", thin(6, macho::kARM64, 0x80000002)));
  EXPECT_EQ(MachOFile::read(file)->preferred().architecture(), "arm64e") << "without its features";
}

TEST_F(MachOFileTest, TakesTheSliceThatADevicePrefers) {
  // Each slice has a file type of its own, which tells the one that was taken.
  const std::string arm64e = thin(6, macho::kARM64, 2);
  const std::string arm64 = thin(2);
  const std::string intel = thin(8, kX86_64, 3);
  const std::string old = thin32(1);
  EXPECT_EQ(fileType(fat({old, intel, arm64e, arm64})), 2U);
  EXPECT_EQ(fileType(fat({old, intel, arm64e})), 6U);
  EXPECT_EQ(fileType(fat({old, intel})), 8U);
  EXPECT_EQ(fileType(fat({old})), 1U);
  EXPECT_EQ(fileType(fat({"no image at all, but as long as a header", arm64})), 2U);
}

TEST_F(MachOFileTest, NothingElseIsAnImage) {
  const std::string whole = thin(2);
  const std::string fatFile = fat({whole});
  for (const std::string& file : {whole, fatFile}) {
    for (std::size_t size = 0; size < file.size(); ++size) {
      EXPECT_EQ(fileType(file.substr(0, size)), 0U) << size;
    }
  }
  EXPECT_EQ(fileType(bigWord(0xCAFEBABE) + bigWord(52) + std::string(4096, 'x')), 0U)
      << "a Java class file";
  EXPECT_EQ(fileType(bigWord(0xFEEDFACF) + std::string(28, '\0')), 0U) << "big-endian";
  EXPECT_EQ(fileType(fat({fatFile})), 0U) << "a fat file in a fat file";
  // A slice that begins in the fat header, where a thin header is forged.
  std::string overlapping = fat({whole});
  overlapping.replace(16, 4, bigWord(4));
  EXPECT_EQ(fileType(overlapping), 0U);
}

}  // namespace
}  // namespace tavlen
