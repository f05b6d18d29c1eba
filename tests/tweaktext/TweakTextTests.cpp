#include <gtest/gtest.h>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaktext/TweakTextReader.h"
#include "tavlen/tweaktext/TweakTextWriter.h"
#include "tests/support/TableFile.h"
#include "tests/support/Thrown.h"
#include "tests/tweaktext/RandomManifest.h"

namespace tavlen {
namespace {

const char* const kTweak = "[tweak]\nname = \"N\"\napp = \"a\"\n";

TEST(TweakText, AHandWrittenTextIsRead) {
  const TweakText text = readTweakText(readFile(paths().testData + "/tweak-text/hand.toml"));
  EXPECT_EQ(encodeJSON(text.manifest) + "\n", readFile(paths().testData + "/tweak-text/hand.json"));
  EXPECT_EQ(text.icon->path + description(text.icon->position), "icon.png6:8");
  EXPECT_EQ(text.script->path, "script.objs");
  EXPECT_EQ(description(text.overrides[1]), "12:1");
  EXPECT_FALSE(text.hooks[0].types);
  EXPECT_EQ(description(*text.hooks[1].types), "24:9");
  EXPECT_EQ(description(text.hooks[1].position) + " " + description(text.hooks[1].method),
            "20:1 21:9");
  EXPECT_EQ(description(text.placeOf(2, {HookPlace::Part::signature})), "30:9");
  const auto place = [&](std::int64_t argument, const ParameterPath& path) {
    return description(text.placeOf(2, {HookPlace::Part::value, argument, path}));
  };
  EXPECT_EQ(place(-1, {3, 1}), "33:14") << "an item of an array";
  EXPECT_EQ(place(-1, {6}), "37:1") << "a key of a table";
  EXPECT_EQ(place(-1, {5, 0, 9}), "36:20") << "the key of a pair, past its places";
  EXPECT_EQ(writeTweakText(text.manifest, {"icon.png", "script.objs"}),
            readFile(paths().testData + "/tweak-text/written.toml"));
}

TEST(TweakText, TypesDecideTheKindsOfPlainIntegers) {
  const std::string args =
      "args = { 0 = 5, 1 = 5, 2 = -5, 3 = 9007199254740993, 4 = { \"$int\" = 5 }, 5 = [5] }\n";
  const std::string types = "v@:QdQdQ@";
  const auto argsOf = [](const TweakText& text) {
    return encodeJSON(text.manifest._hooks[0]->_args);
  };
  const std::string hook = std::string(kTweak) + "[[hook]]\nmethod = \"-[A b]\"\n";
  const TweakText typed = readTweakText(hook + "types = \"" + types + "\"\n" + args);
  const std::string int64 = R"({"type":"_ValueParameter<Int64>","value":)";
  EXPECT_EQ(argsOf(typed), R"({"0":{"type":"_ValueParameter<UInt64>","value":5},)"
                           R"("1":{"type":"_ValueParameter<Double>","value":5},"2":)" +
                               int64 + R"(-5},"3":)" + int64 + R"(9007199254740993},"4":)" + int64 +
                               R"(5},"5":{"type":"Array","items":[)" + int64 + "5}]}}");
  TweakText untyped = readTweakText(hook + args);
  EXPECT_NE(argsOf(untyped), argsOf(typed));
  untyped.setTypes(0, types);
  EXPECT_EQ(untyped.manifest, typed.manifest);
}

TEST(TweakText, EveryManifestReadsBackAsItIs) {
  RandomManifest random(1);
  for (int i = 0; i < 2000; ++i) {
    const TweakFile::Manifest manifest = random.next();
    const std::string text = writeTweakText(manifest, {});
    TweakText read;
    try {
      read = readTweakText(text);
    } catch (const TOMLError& error) {
      FAIL() << error.what() << "\n" << text;
    }
    ASSERT_EQ(writeTweakText(read.manifest, {}), text) << "tells -0.0 from 0.0";
    ASSERT_EQ(read.manifest, manifest) << text;
  }
}

TEST(TweakText, DeepAndLongManifestsReadBack) {
  // As deep as a document may be: a dictionary adds three containers, the rest of the manifest
  // four.
  Parameter deep = NilParameter{};
  for (std::size_t i = 0; i < (JSONEncoder::kMaximumDepth - 5) / 3; ++i) {
    DictionaryParameter dictionary;
    dictionary._items.push_back(DictionaryParameter::Pair::with(NilParameter{}, std::move(deep)));
    deep = std::move(dictionary);
  }
  TweakFile::Manifest manifest;
  manifest.configuration = {"N", {}, "a", {}};
  manifest.setHooks({Hook::with("A", "b", "@16@0:8", false, {{-1, deep}, {0, deep}})});
  EXPECT_NO_THROW(encodeJSON(manifest));
  EXPECT_EQ(readTweakText(writeTweakText(manifest, {})).manifest, manifest);

  const auto arrays = [](std::size_t count) {
    return readTweakText(kTweak + std::string("[[hook]]\nmethod = \"-[A b]\"\nreturn = ") +
                         std::string(count, '[') + std::string(count, ']'));
  };
  EXPECT_NO_THROW(encodeJSON(arrays(253).manifest));
  EXPECT_EQ(messageOf<TOMLError>([&] { arrays(254); }),
            "6:263: nested deeper than a tweak's document may be");

  // More dotted keys than a reader accepts.
  const std::map<std::int64_t, Parameter> args = {{0, NilParameter{}}, {1, NilParameter{}}};
  manifest.setHooks(std::vector(30'000, Hook::with("A", "b", "v@:", false, args)));
  EXPECT_EQ(readTweakText(writeTweakText(manifest, {})).manifest, manifest);
  manifest.configuration.name = std::string(16 << 20, 'x');
  EXPECT_THROW(writeTweakText(manifest, {}), EncodingError);
}

TEST(TweakText, ErrorsSayWhereAndWhatIsExpected) {
  for (const auto& row : tableFrom("tweak-text/errors.txt", 2)) {
    std::string text = row[0];
    std::replace(text.begin(), text.end(), '|', '\n');
    std::string all;
    EXPECT_FALSE(readTweakText(text, [&](const TOMLError& error) {
      all += (all.empty() ? "" : " | ") + error.description();
    }));
    EXPECT_EQ(all, row[1]) << text;
  }
}

}  // namespace
}  // namespace tavlen
