
#include <gmock/gmock.h>

#include <limits>
#include <unordered_set>

#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/editing/DictionaryParameterManager.h"
#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/items/TweakPoster.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Threads.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

/// An instance method's hook of class C as JSON; `args` are the members of its table.
std::string storedHook(const std::string& selector, const std::string& args = "") {
  return R"({"className":"C","selector":")" + selector +
         R"(","signature":"v16@0:8","isClassMethod":false,"args":{)" + args + "}}";
}

class EditingTest : public StoreTest {
 protected:
  /// Gives the tweak these hooks, the elements of the manifest's list.
  void store(const std::string& hooks) {
    root_.write("T 1/Manifest.json",
                R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},)"
                R"("overrides":[],"hooks":[)" +
                    hooks + "]}");
    file_ = TweakFile::at(root_.path() / "T 1");
  }
  std::string stored() const { return readFile(root_.path() / "T 1/Manifest.json"); }
  std::string storedHooks() const { return encodeJSON(file_->manifest()._hooks); }

  std::shared_ptr<TweakFile> file_;
};

using testing::ElementsAre;
using testing::IsEmpty;
using HookManagerTest = EditingTest;

/// Two hooks of one identity, and absent ones between.
const std::string kHooks = storedHook("a") + ",null," + storedHook("b", R"("0":{"type":"Nil"})") +
                           ",null," + storedHook("a", R"("1":{"type":"Nil"})");

Hook hookOf(const std::string& selector) { return Hook::with("C", selector, "v16@0:8", false, {}); }

TEST(MethodIdentity, EveryFieldTellsMethodsApart) {
  const std::unordered_set<MethodIdentity> set = {
      {"C", "a", false}, {"C", "a", true}, {"C", "b", false}, {"D", "a", false}, {"C", "a", false}};
  EXPECT_EQ(set.size(), 4U);
  EXPECT_TRUE(set.contains({"C", "a", true}));
}

TEST_F(HookManagerTest, ReadsTheFirstHookOfItsIdentity) {
  store(kHooks);
  EXPECT_TRUE(file_->managerFor({"C", "a", false}).hook()._args.empty());
  for (const MethodIdentity& identity :
       {MethodIdentity{"C", "a", true}, {"C", "c", false}, {"D", "a", false}}) {
    const auto error = thrown<HookManager::Error>([&] { file_->managerFor(identity).hook(); });
    ASSERT_EQ(error, HookManager::Error::hookNotFound()) << identity.selector;
    EXPECT_EQ(error->localizationKey(), "hook_manager.error.hook_not_found");
    EXPECT_EQ(error->description(), "Hook not found");
  }
}

TEST_F(HookManagerTest, EditsKeepEverythingElseInItsPlace) {
  const std::string second = storedHook("a", R"("1":{"type":"Nil"})");
  const std::string b = storedHook("b", R"("0":{"type":"Nil"})");
  const struct {
    const char* selector;  ///< of the manager
    void (*edit)(const HookManager&);
    std::string hooks;
    const char* diff;
  } cases[] = {
      {"a", [](const HookManager& manager) { manager.setHook(hookOf("new")); },
       storedHook("new") + ",null," + b + ",null," + second, "updateHook new"},
      // Not the hook that has the new one's identity: the manager's counts.
      {"c", [](const HookManager& manager) { manager.setHook(hookOf("a")); },
       kHooks + "," + storedHook("a"), "addHooks a"},
      {"b",
       [](const HookManager& manager) {
         manager.updateHook([](Hook& hook) { hook._args.clear(); });
       },
       storedHook("a") + ",null," + storedHook("b") + ",null," + second, "updateHook b"},
      {"a", [](const HookManager& manager) { manager.deleteHook(); }, "null," + b + ",null",
       "deleteHook"},
      {"c", [](const HookManager& manager) { manager.deleteHook(); }, kHooks, "deleteHook"}};
  for (const auto& [selector, edit, hooks, diff] : cases) {
    store(kHooks);
    edit(file_->managerFor({"C", selector, false}));
    EXPECT_EQ(storedHooks(), "[" + hooks + "]") << selector;
    EXPECT_THAT(announced(), ElementsAre(diff)) << selector;
  }
}

TEST_F(HookManagerTest, DeletingWhatIsNotThereWritesStill) {
  store("");
  const std::string spaced = stored() + "\n";
  fs::remove(file_->url() / "Manifest.json");
  const HookManager manager = file_->managerFor({"C", "a", false});
  EXPECT_THROW(manager.deleteHook(), TweakFile::Error);
  EXPECT_THROW(manager.setHook(hookOf("a")), TweakFile::Error);
  std::ofstream(file_->url() / "Manifest.json") << spaced;
  EXPECT_THAT(announced(), IsEmpty());
  manager.deleteHook();
  EXPECT_EQ(stored() + "\n", spaced);
  EXPECT_THAT(announced(), ElementsAre("deleteHook"));
}

TEST_F(HookManagerTest, AFailedEditChangesAndPostsNothing) {
  store(kHooks);
  const std::string before = stored();
  const HookManager manager = file_->managerFor({"C", "a", false});
  EXPECT_THROW(manager.setHook(hookOf("\xFF")), EncodingError);
  EXPECT_THROW(manager.updateHook([](Hook&) { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_THROW(file_->managerFor({"C", "c", false}).updateHook([](Hook&) {}), HookManager::Error);
  EXPECT_EQ(stored(), before);
  EXPECT_THAT(announced(), IsEmpty());
  EXPECT_TRUE(tweakPoster().shouldPostNotifications);
}

TEST_F(HookManagerTest, PostsOnceTheLockIsFreeWhateverIsSilenced) {
  store("");
  const HookManager manager = file_->managerFor({"C", "a", false});
  bool isFree = false;
  const auto token = NotificationCenter::default_().addObserver(
      std::string(kTweaksDidUpdateNotification), nullptr, [&](const Notification&) {
        std::thread([&] {
          isFree = tweakPoster().recursiveLock.try_lock();
          if (isFree) tweakPoster().recursiveLock.unlock();
        }).join();
      });
  manager.setHook(hookOf("a"));
  NotificationCenter::default_().removeObserver(token);
  EXPECT_TRUE(isFree);
  tweakPoster().performWithoutNotifications([&] { manager.deleteHook(); });
  EXPECT_THAT(announced(), ElementsAre("addHooks a", "deleteHook"));
}

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
