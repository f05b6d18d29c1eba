#include "tavlen/editing/ParameterManager.h"

#include <gmock/gmock.h>

#include <limits>

#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/editing/DictionaryParameterManager.h"
#include "tavlen/editing/RootParameterManager.h"
#include "tests/editing/EditingTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Accessor = DictionaryParameterManager::Accessor;

constexpr const char* kArray =
    R"({"type":"Array","items":[{"type":"Nil"},{"type":"_ValueParameter<Int64>","value":1}]})";
const std::string kDictionary =
    R"({"type":"Dictionary","items":[{"key":{"type":"Class","name":"K"},"value":)" +
    std::string(kArray) + "}]}";
/// Argument 0 is an array, 1 a number, 2 a dictionary with an array as its value.
const std::string kArguments = R"("0":)" + std::string(kArray) +
                               R"(,"1":{"type":"_ValueParameter<Int64>","value":5},"2":)" +
                               kDictionary;

/// Chains over the hook -[C a] of a tweak.
class ParameterManagerTest : public EditingTest {
 protected:
  ParameterManagerTest() { store("null," + storedHook("a", kArguments)); }
  RootParameterManager root(std::int64_t index, const char* selector = "a") const {
    return {file_->managerFor({"C", selector, false}), index};
  }
  static ArrayParameterManager item(const ParameterManager& array, std::int64_t index) {
    return {array.typed<ArrayParameter>(), index};
  }
  static DictionaryParameterManager pair(const ParameterManager& dictionary, std::int64_t index,
                                         Accessor accessor) {
    return {dictionary.typed<DictionaryParameter>(), index, accessor};
  }
  std::string location() const { return URL::fileURL(file_->url()).absoluteString; }
};

std::string jsonOf(const Parameter& parameter) { return encodeJSON(ParameterContainer{parameter}); }

TEST_F(ParameterManagerTest, EachLinkReadsAndReplacesItsLevelOnly) {
  const auto value = pair(root(2), 0, Accessor::value);
  struct Case {
    std::shared_ptr<const ParameterManager> link;
    std::string read;
    std::string arguments;  // once the link's parameter is a nil
  };
  const std::string nil = R"({"type":"Nil"})";
  const auto replaced = [](const std::string& part, const std::string& by, std::size_t from) {
    std::string text = kArguments;
    return text.replace(text.find(part, from), part.size(), by);
  };
  const std::size_t second = kArguments.find("\"2\"");
  const std::string number = R"({"type":"_ValueParameter<Int64>","value":1})";
  const std::vector<Case> cases = {
      {root(1).shared(), R"({"type":"_ValueParameter<Int64>","value":5})",
       replaced(R"({"type":"_ValueParameter<Int64>","value":5})", nil, 0)},
      {item(root(0), 1).shared(), number, replaced(number, nil, 0)},
      {pair(root(2), 0, Accessor::key).shared(), R"({"type":"Class","name":"K"})",
       replaced(R"({"type":"Class","name":"K"})", nil, 0)},
      {value.shared(), kArray, replaced(kArray, nil, second)},
      {item(value, 1).shared(), number, replaced(number, nil, second)}};
  for (const Case& link : cases) {
    const std::string before = stored();
    EXPECT_EQ(link.link->tweak(), file_);
    EXPECT_EQ(jsonOf(link.link->parameter()), link.read);
    EXPECT_THAT(announced(), IsEmpty());
    link.link->setParameter(NilParameter{});
    EXPECT_EQ(storedHooks(), "[null," + storedHook("a", link.arguments) + "]");
    EXPECT_THAT(announced(), ElementsAre("updateHook a")) << "one edit, one diff";
    std::ofstream(file_->url() / "Manifest.json") << before;
  }
}

TEST_F(ParameterManagerTest, SaysWhatIsWrongInItsOrderAndWritesNothing) {
  const std::string mismatch = "Parameter type mismatch: expected ";
  const std::string same;
  const struct {
    std::shared_ptr<const ParameterManager> link;
    std::string reading;
    std::string writing;
  } cases[] = {
      {root(0, "none").shared(), "Hook not found", same},
      {item(root(9), 0).shared(), "Parameter not found at index 9 in tweak " + location(), same},
      {item(root(0), 2).shared(), "Index out of bounds: 2", same},
      {item(root(0), -1).shared(), "Index out of bounds: -1", same},
      {item(root(0), std::numeric_limits<std::int64_t>::max()).shared(),
       "Index out of bounds: 9223372036854775807", same},
      {item(root(2), 5).shared(), mismatch + "ArrayParameter but found DictionaryParameter", same},
      {item(root(2), -1).shared(), "Index out of bounds: -1",
       mismatch + "ArrayParameter but found DictionaryParameter"},
      {item(root(7, "none"), -1).shared(), "Index out of bounds: -1", "Hook not found"},
      {pair(root(2), 1, Accessor::key).shared(), "Index out of bounds: 1", same},
      {pair(root(1), 1, Accessor::key).shared(),
       mismatch + "DictionaryParameter but found _ValueParameter<Int64>", same},
      {pair(root(1), -2, Accessor::value).shared(), "Index out of bounds: -2",
       mismatch + "DictionaryParameter but found _ValueParameter<Int64>"},
      {item(pair(root(2), 0, Accessor::key), 0).shared(),
       mismatch + "ArrayParameter but found ClassParameter", same}};
  const std::string before = stored();
  for (const auto& row : cases) {
    EXPECT_EQ(messageOf([&] { row.link->parameter(); }), row.reading);
    EXPECT_EQ(messageOf([&] { row.link->setParameter(NilParameter{}); }),
              row.writing.empty() ? row.reading : row.writing);
  }
  EXPECT_THROW(item(root(0), 0).setParameter(ValueParameter<std::string>{"\xFF"}), EncodingError);
  EXPECT_EQ(stored(), before);
  EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(ParameterManagerTest, ErrorsKnowWhatTheyAreAbout) {
  EXPECT_EQ(ParameterError::typeMismatch("A", URLParameter{}).found(), "URLParameter");
  EXPECT_EQ(ParameterError::notFound(-1, file_).tweak(), file_);
  EXPECT_TRUE(location().starts_with("file:///") && location().ends_with("/T%201")) << location();
}

TEST_F(ParameterManagerTest, ARootAddsWhatIsMissing) {
  const RootParameterManager result = root(Hook::kReturnValue);
  EXPECT_EQ(messageOf([&] { result.parameter(); }),
            "Parameter not found at index -1 in tweak " + location());
  EXPECT_THROW(result.updateParameter([](Parameter&) {}), ParameterError);
  result.setParameter(CodeParameter{"x"});
  EXPECT_EQ(result.parameter(), Parameter(CodeParameter{"x"}));
  EXPECT_EQ(file_->manifest()._hooks.size(), 2U);
  EXPECT_THAT(announced(), ElementsAre("updateHook a"));
}

TEST_F(ParameterManagerTest, ItemsAreInsertedThroughTheirCollection) {
  const auto value = pair(root(2), 0, Accessor::value);
  value.typed<ArrayParameter>().updateParameter([](ArrayParameter& array) {
    array._items.insert(array._items.begin(), {CodeParameter{"first"}});
  });
  EXPECT_EQ(item(value, 0).parameter(), Parameter(CodeParameter{"first"}));
  EXPECT_EQ(item(value, 2).parameter(), Parameter(ValueParameter<std::int64_t>{1}));
  value.updateParameter([](Parameter& parameter) { parameter = NilParameter{}; });
  EXPECT_EQ(value.parameter(), Parameter(NilParameter{}));
  EXPECT_THAT(announced(), ElementsAre("updateHook a", "updateHook a"));
}

}  // namespace
}  // namespace tavlen
