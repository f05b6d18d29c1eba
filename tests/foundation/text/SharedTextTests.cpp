#include "tavlen/foundation/text/SharedTextPool.h"

#include <gtest/gtest.h>

#include <memory>

namespace tavlen {
namespace {

using namespace std::string_literals;

TEST(SharedText, KeepsWhatItNeedsAndNoMore) {
  std::string source = "v24@0:8\0@16"s;
  const SharedText copy = source;
  SharedText piece = copy.piece(1, 2);
  source = "changed";
  EXPECT_EQ(copy, "v24@0:8\0@16"s);
  EXPECT_EQ(piece, "24");
  EXPECT_EQ(piece.data(), copy.data() + 1);

  auto owner = std::make_shared<const std::string>("a text that is longer than a short one");
  const std::weak_ptr<const std::string> watched = owner;
  SharedText part(owner, std::string_view(*owner).substr(2, 4));
  owner.reset();
  EXPECT_EQ(part, "text");
  part = {};
  EXPECT_TRUE(watched.expired());
}

TEST(SharedText, ComparesWithEveryFormOfText) {
  const SharedText text = "b";
  for (const SharedText& same :
       {SharedText("b"), SharedText::lasting("b"), SharedText("abc").piece(1, 1)}) {
    EXPECT_EQ(text, same);
    EXPECT_EQ(std::hash<SharedText>()(text), std::hash<SharedText>()(same));
  }
  EXPECT_EQ("b"s, text);
  EXPECT_NE(text, std::string_view("b\0", 2));
  EXPECT_LT(text, SharedText("c"));
  EXPECT_GT(text, ""s);
  EXPECT_EQ(SharedText(), "");
  EXPECT_EQ(testing::PrintToString(text), "\"b\"");
}

TEST(SharedTextPool, MakesEqualTextsOne) {
  std::vector<std::string> sources;
  for (int i = 0; i < 5'000; ++i) sources.push_back("selector" + std::to_string(i) + ":");
  sources.insert(sources.end(), {"", std::string(100'000, 'x'), std::string(1'024, 'y')});
  std::vector<SharedText> texts;
  {
    SharedTextPool pool;
    for (const std::string& source : sources) texts.push_back(pool.shared(source));
    for (std::size_t i = 0; i < sources.size(); ++i) {
      EXPECT_EQ(pool.shared(std::string(sources[i])).data(), texts[i].data());
    }
  }
  for (std::size_t i = 0; i < sources.size(); ++i) EXPECT_EQ(texts[i], sources[i]);
}

}  // namespace
}  // namespace tavlen
