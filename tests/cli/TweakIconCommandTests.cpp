#include <gmock/gmock.h>

#include "tavlen/foundation/image/Image.h"
#include "tests/cli/CommandStoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

TEST_F(CommandStoreTest, IconSetStoresThePictureAndClearTakesItAway) {
  const std::string icon = stored(newTweak("T")) + "/Icon.png";
  const Image picture(2, 1, {1, 2, 3, 255, 4, 5, 6, 7});
  write("picture", picture.pngData());
  write("text", "no picture");
  EXPECT_EQ(run("icon set T picture").err, "");
  EXPECT_EQ(Image::decode(contents(icon)), picture);
  setInput("text");
  for (const char* file : {"text", "-", "gone", "."}) {
    EXPECT_EQ(run("icon set T", {file}).status, 1) << file;
  }
  EXPECT_EQ(Image::decode(contents(icon)), picture) << "as it was";
  EXPECT_EQ(run("icon clear T").err, "");
  EXPECT_FALSE(fs::exists(folder() / icon));
  for (const char* misuse : {"", "set", "set T", "clear", "clear T x", "clear T -o x",
                             "clear T --size 3", "set T picture x", "-o x", "com.example.notes"}) {
    EXPECT_EQ(run(std::string("icon ") + misuse).status, 2) << misuse;
  }
  EXPECT_FALSE(fs::exists(folder() / icon));
}

}  // namespace
}  // namespace tavlen
