#include "tavlen/editing/HookManager.h"

#include <gmock/gmock.h>

#include <thread>
#include <unordered_set>

#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/items/TweakPoster.h"
#include "tests/editing/EditingTest.h"
#include "tests/support/Threads.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

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
  std::filesystem::remove(file_->url() / "Manifest.json");
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

TEST_F(HookManagerTest, ThreadsLoseNoEdit) {
  constexpr int kThreads = 4;
  constexpr int kEdits = 12;
  store(storedHook("shared"));
  inThreads(kThreads, [&](int thread) {
    const std::string own = "own" + std::to_string(thread);
    const auto file = TweakFile::at(file_->url());
    for (int edit = 0; edit < kEdits; ++edit) {
      Hook hook = hookOf(own);
      hook.customName = std::to_string(edit);
      file->managerFor({"C", own, false}).setHook(hook);
      const std::lock_guard lock(tweakPoster().recursiveLock);
      RootParameterManager(file->managerFor({"C", "shared", false}), thread * kEdits + edit)
          .setParameter(NilParameter{});
    }
  });
  const TweakFile::Manifest manifest = file_->manifest();
  ASSERT_EQ(manifest._hooks.size(), 1U + kThreads);
  EXPECT_EQ(manifest._hooks.front().value()._args.size(), std::size_t{kThreads * kEdits});
  for (std::size_t i = 1; i < manifest._hooks.size(); ++i)
    EXPECT_EQ(manifest._hooks[i].value().customName, std::to_string(kEdits - 1));
}

}  // namespace
}  // namespace tavlen
