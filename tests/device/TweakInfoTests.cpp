#include "tavlen/device/TweakInfo.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tavlen/device/DeviceRoot.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

class TweakInfoTest : public testing::Test {
 protected:
  TweakInfoTest() { DeviceRoot::setShared(DeviceRoot(root_.path())); }
  ~TweakInfoTest() override { DeviceRoot::setShared(DeviceRoot()); }

  static TweakInfo withIcon(const char* url) {
    TweakInfo info("app", "tweak");
    info.customIconURL = URL{url};
    return info;
  }

  TemporaryFolder root_;
};

TEST_F(TweakInfoTest, respringsWhenTheIconsBytesDiffer) {
  root_.write("icons/a b.png", "one");
  root_.write("icons/same.png", "one");
  root_.write("icons/other.png", "two");
  root_.write("icons/empty.png", "");
  ASSERT_EQ(::mkfifo((root_.path() / "pipe").c_str(), 0600), 0);
  const auto huge = root_.write("huge.png", "one");
  std::filesystem::resize_file(huge, std::uintmax_t{1} << 40);  // sparse

  std::filesystem::create_symlink("circle.png", root_.path() / "circle.png");

  const char* const kIcon = "file:///icons/a%20b.png";
  const struct {
    const char* mine;  ///< null for a record without an icon
    const char* others;
    bool expected;
  } rows[] = {{nullptr, nullptr, false},
              {kIcon, nullptr, true},
              {nullptr, kIcon, true},
              {kIcon, kIcon, false},
              {kIcon, "file:///icons/same.png", false},
              {kIcon, "file:///icons/other.png", true},
              {kIcon, "file:///icons/missing.png", true},
              {"file:///icons/missing.png", "file:///icons/gone.png", false},
              {"file:///icons/empty.png", "file:///icons/missing.png", true},  // no bytes are bytes
              {"file:///icons", "file:///icons/missing.png", false},
              {"http://icons/a%20b.png", kIcon, true},
              {"file:///pipe", kIcon, true},
              {"file:///circle.png", kIcon, true},
              {"file:///huge.png", kIcon, true},
              {"file:///huge.png", "file:///pipe", false}};
  for (const auto& row : rows) {
    const TweakInfo mine = row.mine == nullptr ? TweakInfo("a", "b") : withIcon(row.mine);
    const TweakInfo others = row.others == nullptr ? TweakInfo() : withIcon(row.others);
    EXPECT_EQ(mine.shouldRespringAfterChangingFromOther(others), row.expected)
        << (row.mine == nullptr ? "none" : row.mine);
  }
  EXPECT_TRUE(withIcon(kIcon).shouldRespringAfterChangingFromOther(std::nullopt));
  EXPECT_FALSE(TweakInfo().shouldRespringAfterChangingFromOther(std::nullopt));
}

}  // namespace
}  // namespace tavlen
