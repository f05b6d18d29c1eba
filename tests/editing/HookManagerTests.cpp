#include "tavlen/editing/HookManager.h"

#include <gtest/gtest.h>

#include <thread>
#include <unordered_set>

#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakPoster.h"
#include "tests/editing/EditedTweak.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Words = std::vector<std::string>;

/// Two hooks of one identity, and absent ones between.
const std::string kHooks = storedHook("a") + ",null," + storedHook("b", R"("0":{"type":"Nil"})") +
                           ",null," + storedHook("a", R"("1":{"type":"Nil"})");

Hook hookOf(const std::string& selector) { return Hook::with("C", selector, "v16@0:8", false, {}); }

TEST(MethodIdentity, EveryFieldTellsMethodsApart) {
  const std::unordered_set<MethodIdentity> set = {
      {"C", "a", false}, {"C", "a", true}, {"C", "b", false}, {"D", "a", false}, {"C", "a", false}};
  EXPECT_EQ(set.size(), 4U);
  EXPECT_TRUE(set.contains({"C", "a", true}));
  EXPECT_FALSE(set.contains({"a", "C", true}));
}

TEST(HookManager, ReadsTheFirstHookOfItsIdentity) {
  const EditedTweak tweak(kHooks);
  EXPECT_TRUE(tweak.file()->managerFor({"C", "a", false}).hook()._args.empty());
  for (const MethodIdentity& identity :
       {MethodIdentity{"C", "a", true}, {"C", "c", false}, {"D", "a", false}}) {
    const auto error =
        thrown<HookManager::Error>([&] { tweak.file()->managerFor(identity).hook(); });
    ASSERT_EQ(error, HookManager::Error::hookNotFound()) << identity.selector;
    EXPECT_EQ(error->localizationKey(), "hook_manager.error.hook_not_found");
    EXPECT_EQ(error->description(), "Hook not found");
  }
}

TEST(HookManager, EditsKeepEverythingElseInItsPlace) {
  struct Case {
    const char* selector;  // of the manager
    void (*edit)(const HookManager&);
    std::string hooks;
    Words diffs;
  };
  const std::string second = storedHook("a", R"("1":{"type":"Nil"})");
  const std::string b = storedHook("b", R"("0":{"type":"Nil"})");
  const std::vector<Case> cases = {
      {"a",
       [](const HookManager& manager) { manager.setHook(hookOf("new")); },
       storedHook("new") + ",null," + b + ",null," + second,
       {"UpdateHook(new)"}},
      // Not the hook that has the new one's identity: the manager's counts.
      {"c",
       [](const HookManager& manager) { manager.setHook(hookOf("a")); },
       kHooks + "," + storedHook("a"),
       {"AddHooks(a)"}},
      {"b",
       [](const HookManager& manager) {
         manager.updateHook([](Hook& hook) { hook._args.clear(); });
       },
       storedHook("a") + ",null," + storedHook("b") + ",null," + second,
       {"UpdateHook(b)"}},
      {"a",
       [](const HookManager& manager) { manager.deleteHook(); },
       "null," + b + ",null",
       {"DeleteHook"}},
      {"c", [](const HookManager& manager) { manager.deleteHook(); }, kHooks, {"DeleteHook"}}};
  for (const Case& edit : cases) {
    const EditedTweak tweak(kHooks);
    edit.edit(tweak.file()->managerFor({"C", edit.selector, false}));
    EXPECT_EQ(tweak.storedHooks(), "[" + edit.hooks + "]") << edit.selector;
    EXPECT_EQ(tweak.takeDiffs(), edit.diffs) << edit.selector;
  }
}

TEST(HookManager, DeletingWhatIsNotThereWritesStill) {
  const EditedTweak tweak("");
  const std::string spaced = tweak.stored() + "\n";
  std::filesystem::remove(tweak.file()->url() / "Manifest.json");
  const HookManager manager = tweak.file()->managerFor({"C", "a", false});
  EXPECT_THROW(manager.deleteHook(), TweakFile::Error);
  EXPECT_THROW(manager.setHook(hookOf("a")), TweakFile::Error);
  std::ofstream(tweak.file()->url() / "Manifest.json") << spaced;
  EXPECT_EQ(tweak.takeDiffs(), Words());
  manager.deleteHook();
  EXPECT_EQ(tweak.stored() + "\n", spaced);
  EXPECT_EQ(tweak.takeDiffs(), Words{"DeleteHook"});
}

TEST(HookManager, AFailedEditChangesAndPostsNothing) {
  const EditedTweak tweak(kHooks);
  const std::string before = tweak.stored();
  const HookManager manager = tweak.file()->managerFor({"C", "a", false});
  EXPECT_THROW(manager.setHook(hookOf("\xFF")), EncodingError);
  EXPECT_THROW(manager.updateHook([](Hook&) { throw std::runtime_error("no"); }),
               std::runtime_error);
  EXPECT_THROW(tweak.file()->managerFor({"C", "c", false}).updateHook([](Hook&) {}),
               HookManager::Error);
  EXPECT_EQ(tweak.stored(), before);
  EXPECT_EQ(tweak.takeDiffs(), Words());
  EXPECT_TRUE(tweakPoster().shouldPostNotifications);
}

TEST(HookManager, PostsOnceTheLockIsFreeWhateverIsSilenced) {
  const EditedTweak tweak("");
  const HookManager manager = tweak.file()->managerFor({"C", "a", false});
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
  EXPECT_EQ(tweak.takeDiffs(), (Words{"AddHooks(a)", "DeleteHook"}));
}

TEST(HookManager, ObserversMayEditTheTweak) {
  const EditedTweak tweak("");
  const auto token = NotificationCenter::default_().addObserver(
      std::string(kTweaksDidUpdateNotification), nullptr, [&](const Notification&) {
        if (tweak.file()->manifest()._hooks.size() < 3)
          tweak.file()->managerFor({"C", "none", false}).setHook(hookOf("more"));
      });
  tweak.file()->managerFor({"C", "a", false}).setHook(hookOf("a"));
  NotificationCenter::default_().removeObserver(token);
  EXPECT_EQ(tweak.file()->manifest()._hooks.size(), 3U);
}

TEST(HookManager, ThreadsLoseNoEdit) {
  constexpr int kThreads = 4;
  constexpr int kEdits = 12;
  const EditedTweak tweak(storedHook("shared"));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      const std::string own = "own" + std::to_string(thread);
      const auto file = TweakFile::at(tweak.file()->url());
      for (int edit = 0; edit < kEdits; ++edit) {
        Hook hook = hookOf(own);
        hook.customName = std::to_string(edit);
        file->managerFor({"C", own, false}).setHook(hook);
        const std::lock_guard lock(tweakPoster().recursiveLock);
        RootParameterManager(file->managerFor({"C", "shared", false}), thread * kEdits + edit)
            .setParameter(NilParameter{});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const TweakFile::Manifest manifest = tweak.file()->manifest();
  ASSERT_EQ(manifest._hooks.size(), 1U + kThreads);
  EXPECT_EQ(manifest._hooks.front().value()._args.size(), std::size_t{kThreads * kEdits});
  for (std::size_t i = 1; i < manifest._hooks.size(); ++i)
    EXPECT_EQ(manifest._hooks[i].value().customName, std::to_string(kEdits - 1));
}

}  // namespace
}  // namespace tavlen
