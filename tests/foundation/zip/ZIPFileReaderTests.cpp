#include "tavlen/foundation/zip/ZIPFileReader.h"

#include <gmock/gmock.h>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using Case = ZIPError::Case;

/// An archive that unzipItem() refuses for most of its entries.
constexpr const char* kScript = R"(
import sys
sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])
from hostile_archives import archive, Entry, LINK, PIPE, ENCRYPTED
broken = Entry("App/broken")
broken.data = b"\xff" * len(broken.data)
open(sys.argv[2], "wb").write(archive(
    Entry("App/"), Entry("App/good", b"0123456789"), Entry("App/more/stored", b"abc", method=0),
    Entry("../escape"), Entry("/absolute"), Entry("App//x"), Entry("App/link", mode=LINK), Entry("App/pipe", mode=PIPE),
    Entry("App/twice", b"1"), Entry("App/twice", b"2"), broken, Entry("App/secret", flags=ENCRYPTED),
    Entry("App/bomb", bytes(1 << 20)), Entry("App/checksum", crc=1, local_crc=1),
    Entry("App/record", local_name=b"App/rEcord"), Entry("App/Good", b"other")))
)";

class ZIPFileReaderTest : public testing::Test {
 protected:
  ZIPFileReaderTest() {
    folder_.write("make.py", kScript);
    const std::string scripts = paths().testData + "/../foundation/zip";
    const std::string command =
        "python3 " + (folder_.path() / "make.py").string() + " " + scripts + " " + archive();
    EXPECT_EQ(std::system(command.c_str()), 0);
  }
  std::string archive() const { return (folder_.path() / "a.ipa").string(); }
  fs::path out() const { return folder_.path() / "out"; }

  TemporaryFolder folder_;
};

TEST_F(ZIPFileReaderTest, ReadsWhatIsAskedForAndJudgesNothingElse) {
  ZIPFileReader reader(archive());
  EXPECT_THAT(reader.names(), testing::ElementsAre("App/good", "App/more/stored", "App/twice",
                                                   "App/broken", "App/secret", "App/bomb",
                                                   "App/checksum", "App/record", "App/Good"));
  EXPECT_EQ(reader.firstBytes("App/good", 4), "0123");
  EXPECT_EQ(reader.firstBytes("App/more/stored", 4), "abc");
  EXPECT_EQ(reader.firstBytes("App/bomb", 4), std::string(4, '\0'));
  reader.unpack({"App/more/stored", "App/good"}, out());
  EXPECT_EQ(readFile(out() / "App/good"), "0123456789");
  EXPECT_EQ(readFile(out() / "App/more/stored"), "abc");
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator(out()), {}), 4);
}

TEST_F(ZIPFileReaderTest, RefusesWhatItIsAskedForByTheRulesOfArchives) {
  const ZIPArchive::Limits limits = {.entries = 50, .ratio = 20, .ratioFreeBytes = 1 << 10};
  ZIPFileReader reader(archive(), limits);
  const std::pair<const char*, Case> rows[] = {
      {"App/twice", Case::duplicateName},       {"App/broken", Case::damagedData},
      {"App/secret", Case::unsupportedEntry},   {"App/bomb", Case::ratioTooHigh},
      {"App/checksum", Case::checksumMismatch}, {"App/record", Case::recordMismatch}};
  for (const auto& [name, which] : rows) {
    const std::vector<std::string> files = {"App/good", name};
    const auto error = thrown<ZIPError>([&] { reader.unpack(files, out()); });
    ASSERT_TRUE(error.has_value()) << name;
    EXPECT_EQ(error->which(), which) << name;
    EXPECT_FALSE(fs::exists(out())) << name;
  }
  const auto tooMany = thrown<ZIPError>([&] { ZIPFileReader(archive(), {.entries = 15}); });
  EXPECT_EQ(tooMany->which(), Case::tooManyEntries);
}

}  // namespace
}  // namespace tavlen
