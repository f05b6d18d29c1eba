#include "tavlen/tweaks/ResourceUse.h"

#include <gtest/gtest.h>

namespace tavlen {
namespace {

TEST(ResourceUse, ValuesNameFilesAndTextsContainTheirNames) {
  const std::vector<std::string> resources = {"a.png",   "aa.png",      "a.png2",     "sub/c.txt",
                                              "d.plist", "other/c.txt", "unused.png", "e"};
  TweakFile::Manifest manifest;
  manifest._hooks.emplace_back();
  manifest.setHooks({Hook::with("A", "a", "@@:", false,
                                {{-1, ImageParameter{"a.png"}},
                                 {0, ArrayParameter::withItems({DataParameter{"./sub//c.txt"}})},
                                 {1, ValueParameter<std::string>{"d.plist"}},
                                 {2, CodeParameter{"[X imageNamed:@\"aa.png\" or:@\"aa.png\"]"}}}),
                     Hook::with("A", "b", "@@:", false, {{-1, URLParameter{"x://c.txt"}}})});
  std::string text;
  for (const ResourceUse& use : usesOf(resources, manifest, "a.png2"))
    text += std::to_string(use.count) + " " + use.first + "\n";
  EXPECT_EQ(text,
            "3 hooks[0].args.-1\n"
            "1 hooks[0].args.2\n"
            "1 script.objs\n"
            "2 hooks[0].args.0.items[0]\n"
            "1 hooks[0].args.1\n"
            "1 hooks[1].args.-1\n"
            "0 \n"
            "1 hooks[0].args.2\n");
}

}  // namespace
}  // namespace tavlen
