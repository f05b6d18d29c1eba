// Who owns what: instances of Counted are counted.
#include <gmock/gmock.h>

#include <dlfcn.h>
#include <pthread.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/loader/LoadedTweak.h"
#include "tools/loader/base/ExceptionGuard.h"
#include "tools/loader/base/Messages.h"

namespace tavlen::loader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

int liveCount() { return ObjCRuntime::send<int>(ObjCRuntime::classNamed("Counted"), "live"); }

std::string hookOf(const std::string& cls, const std::string& key, const std::string& body) {
  return "hookClass(\"" + cls + "\", {}, {\"" + key + "\": function(first) {" + body + "}});";
}

TEST(LoaderOwnership, EveryReferenceIsGivenBackOnce) {
  // Of the script, and of the caller, who owns what methods of the families give it.
  const std::vector<std::string> bodies = {
      "[[Counted alloc] init]; [Counted new]; [Counted counted]; return %orig",
      "const made = [Counted new]; return [made itself] === made ? made : null",
      "for (let i = 0; i < 5; i++) [[Counted new] copy]; return [this itself]",
      "return [[Counted new] copy]",
      "%orig; return %orig",
      "%orig; return null",
      "throw 'mistake'",
      "try { [@[] objectAtIndex:1] } catch (e) {} return @[[Counted new], @{'k': [Counted new]}]",
  };
  struct Kind {
    const char* key;
    bool isOwned;
  };
  for (const Kind& kind :
       {Kind{"@16@0:8-itself", false}, Kind{"@16@0:8-copy", true}, Kind{"@16@0:8-init", true}}) {
    for (const std::string& body : bodies) {
      const std::string cls = makeClass("Counted");
      const LoadedTweak tweak(hookOf(cls, kind.key, body));
      const int before = liveCount();
      {
        const ObjCRuntime::AutoreleasePool pool;
        const std::string name = std::string(kind.key).substr(8);
        id object = ObjCRuntime::send(ObjCRuntime::classNamed(cls.c_str()), "alloc");
        if (name != "init") object = ObjCRuntime::send(object, "init");
        id answer = ObjCRuntime::send(object, name.c_str());
        tweak.collect();
        if (answer != nullptr) ObjCRuntime::send(answer, "description");
        if (kind.isOwned) ObjCRuntime::send<void>(answer, "release");
        if (name != "init") ObjCRuntime::send<void>(object, "release");
      }
      tweak.collect();
      EXPECT_EQ(liveCount(), before) << kind.key << ' ' << body;
    }
  }
}

TEST(LoaderOwnership, AReceiverBeingDeallocatedIsOnlyLent) {
  const LoadedTweak tweak(R"(let kept, tags = 0;
hookClass("CountedChild", {}, {"v16@0:8-dealloc": function() {
  tags += [this tag];
  kept = this;
  [NSString stringWithFormat:"%@", this];
  %orig;
  [kept tag];
}});
hookClass("Counted", {}, {"v16@0:8-dealloc": function() { tags += [this tag]; return %orig; }, "i16@0:8-tag": function() { return %orig + tags; }});)");
  const int before = liveCount();
  const ObjCRuntime::AutoreleasePool pool;
  ObjCRuntime::send<void>(make("CountedChild"), "release");
  EXPECT_EQ(liveCount(), before);
  EXPECT_THAT(
      tweak.events.of(LoaderEvent::kMistake),
      ElementsAre("7:3 -[CountedChild dealloc]: the object has ended, or its caller owns it now"));
  id object = make("Counted");
  EXPECT_EQ(ObjCRuntime::send<int>(object, "tag"), 7 + 7 + 14) << "both classes' hooks ran";
  ObjCRuntime::send<void>(object, "release");
}

TEST(LoaderOwnership, AnAllocatedObjectMayEndWhoeverRefersToIt) {
  const std::string cls = makeClass("Counted");
  const LoadedTweak tweak(hookOf(cls, "@16@0:8+alloc", "return %orig"), true);
  const int before = liveCount();
  const ObjCRuntime::AutoreleasePool pool;
  const auto allocate = [&] {
    return ObjCRuntime::send(ObjCRuntime::classNamed(cls.c_str()), "alloc");
  };
  ObjCRuntime::send<void>(allocate(), "dealloc");
  id other = allocate();  // often at the same address
  tweak.collect();
  EXPECT_EQ(liveCount(), before + 1);
  ObjCRuntime::send<void>(other, "release");
  EXPECT_EQ(liveCount(), before);
}

TEST(LoaderOwnership, AnAllocMethodMayAnswerAnObjectThatTheScriptKeeps) {
  const std::string cls = makeClass("Counted");
  // The second hook has the first one as its original.
  const LoadedTweak tweak(
      "const kept = [Counted new];" + hookOf(cls, "@16@0:8+alloc", "return kept") +
          hookOf(cls, "@16@0:8+alloc", "const answer = %orig; [kept tag]; return answer"),
      true);
  const int before = liveCount();
  const ObjCRuntime::AutoreleasePool pool;
  for (int i = 0; i < 3; ++i)
    ObjCRuntime::send<void>(ObjCRuntime::send(ObjCRuntime::classNamed(cls.c_str()), "alloc"),
                            "release");
  EXPECT_EQ(liveCount(), before);
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake), IsEmpty());
}

TEST(LoaderOwnership, ManyCallsTakeNoMoreMemory) {
  const std::string cls = makeClass("Counted");
  const LoadedTweak tweak(hookOf(cls, "@16@0:8-itself", "%orig; return [Counted new]"));
  const int before = liveCount();
  id object = make(cls);
  for (int i = 0; i < 20000; ++i) {
    const ObjCRuntime::AutoreleasePool pool;
    ObjCRuntime::send(object, "itself");
    if (i % 1000 == 0) JSSynchronousGarbageCollectForDebugging(tweak.loader->engine().context());
    ASSERT_LT(liveCount(), before + 2000);
  }
}

TEST(LoaderExceptions, PassThroughScriptsAsThemselves) {
  const std::string cls = makeClass("Answers");
  const LoadedTweak tweak(
      hookOf(cls, "@16@0:8-raise", "return %orig") +
      hookOf(cls, "@24@0:8@16-answer:", "throw first") +
      hookOf(cls, "@24@0:8@16-forward:", "try { [this raise] } catch (e) { return e.message }"));
  const ObjCRuntime::AutoreleasePool pool;
  id object = make(cls);
  const auto raisedBy = [&](FunctionRef<void()> body) {
    id raised = guarded(body);
    return autorelease(raised);
  };
  id own = raisedBy([&] { ObjCRuntime::send(object, "raise"); });
  EXPECT_EQ(ObjCRuntime::text(ObjCRuntime::send(own, "name")), "NSRangeException");
  id given = ObjCRuntime::makeString("raised");
  EXPECT_EQ(raisedBy([&] { ObjCRuntime::send(object, "answer:", given); }), given);
  EXPECT_EQ(ObjCRuntime::text(ObjCRuntime::send(object, "forward:", given)),
            "NSRangeException: beyond");
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake), IsEmpty());

  const std::string thrower = makeClass("Answers");
  const auto code = +[](id, SEL) -> id { throw std::out_of_range("C++"); };
  class_addMethod(ObjCRuntime::classNamed(thrower.c_str()), ObjCRuntime::selectorNamed("raise"),
                  reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(code)), "@16@0:8");
  const LoadedTweak other(hookOf(thrower, "@16@0:8-raise", "return %orig"));
  EXPECT_THROW(ObjCRuntime::send(make(thrower), "raise"), std::out_of_range);
}

TEST(LoaderThreads, ShareOneScript) {
  const std::string cls = makeClass("Answers");
  const LoadedTweak tweak("let calls = 0;" +
                          hookOf(cls, "i20@0:8i16-depth:", "calls++; return %orig") +
                          hookOf(cls, "@24@0:8@16-answer:", "return @(calls)"));
  constexpr int kThreads = 4;
  constexpr int kCalls = 300;
  constexpr int kDepth = 9;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < kCalls; ++call) {
        const ObjCRuntime::AutoreleasePool pool;
        id object = make(cls);
        EXPECT_EQ(ObjCRuntime::send<int>(object, "depth:", kDepth), kDepth);
        ObjCRuntime::send<void>(object, "release");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const ObjCRuntime::AutoreleasePool pool;
  id calls = ObjCRuntime::send(make(cls), "answer:", id());
  EXPECT_EQ(ObjCRuntime::send<int>(calls, "intValue"), kThreads * kCalls * (kDepth + 1));
}

TEST(LoaderThreads, WithoutRoomForAnotherScriptRunTheOriginal) {
  struct Recursion {
    std::string cls = makeClass("Answers");
    LoadedTweak tweak{hookOf(cls, "i20@0:8i16-depth:", "return %orig")};
    int depth = 0;
  } recursion;
  constexpr int kDepth = 240;  // scripts alone would take more than the stack
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, std::size_t{1} << 20U);
  pthread_t thread{};
  const auto body = [](void* given) -> void* {
    const ObjCRuntime::AutoreleasePool pool;
    auto& own = *static_cast<Recursion*>(given);
    own.depth = ObjCRuntime::send<int>(make(own.cls), "depth:", kDepth);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, body, &recursion), 0);
  pthread_join(thread, nullptr);
  EXPECT_EQ(recursion.depth, kDepth);
  EXPECT_THAT(recursion.tweak.events.of(LoaderEvent::kMistake),
              ElementsAre(testing::EndsWith("no room for another script")));
}

TEST(LoaderHooks, AreMadeWhenTheirClassIsLoaded) {
  const LoadedTweak tweak(
      R"(hookClass("RuntimeProbe", {}, {"d24@0:8d16-half:": function() { return [RuntimeProbe live] - 5; }});)");
  EXPECT_THAT(tweak.events.of(LoaderEvent::kWaiting), SizeIs(1));
  ASSERT_NE(::dlopen(paths().standInsLibrary.c_str(), RTLD_NOW), nullptr);
  tweak.loader->imageLoaded();
  EXPECT_THAT(tweak.events.of(LoaderEvent::kHooked), SizeIs(1));
  EXPECT_EQ(ObjCRuntime::send<double>(make("RuntimeProbe"), "half:", 4.0), -5);
}

TEST(LoaderHooks, OfClassesThatHaveNotBeenUsedRunForThemAlone) {
  const LoadedTweak tweak(hookOf("UnusedChild", "@16@0:8+name", "return 'child, ' + %orig") +
                          hookOf("Unused", "@16@0:8+name", "return 'hooked, ' + %orig"));
  const ObjCRuntime::AutoreleasePool pool;
  const auto name = [](const char* cls) {
    return ObjCRuntime::text(ObjCRuntime::send(ObjCRuntime::classNamed(cls), "name"));
  };
  EXPECT_EQ(name("UnusedOther"), "other");
  EXPECT_EQ(name("UnusedChild"), "child, hooked, unused");
  EXPECT_EQ(name("Unused"), "hooked, unused");
}

TEST(LoaderHooks, OfAListPassAnEndedOneOn) {
  for (const char* body : {"return %orig", "return %orig('a')", "throw 'mistake'"}) {
    const std::string cls = makeClass("Answers");
    const LoadedTweak tweak(hookOf(cls, "@24@0:8@16-join:", body));
    const ObjCRuntime::AutoreleasePool pool;
    id given = ObjCRuntime::makeString("a");
    id joined = ObjCRuntime::send(make(cls), "join:", given, given, id());
    EXPECT_EQ(ObjCRuntime::text(joined), "a") << body;
  }
}

TEST(LoaderHooks, CodeThatComputesTooLongIsNamed) {
  const std::string cls = makeClass("Answers");
  const std::string loop = "const end = Date.now() + 200; while (Date.now() < end);";
  const LoadedTweak tweak(
      hookOf(cls, "@24@0:8@16-answer:", loop + "return %orig") + '{' + loop + '}', false,
      std::chrono::milliseconds(50));
  const ObjCRuntime::AutoreleasePool pool;
  ObjCRuntime::send(make(cls), "answer:", id());
  const std::string text = "the script has been computing for more than 50 ms";
  EXPECT_THAT(tweak.events.of(LoaderEvent::kSlow),
              ElementsAre("0:0 : " + text, testing::EndsWith("[" + cls + " answer:]: " + text)));
  EXPECT_THAT(tweak.events.of(LoaderEvent::kSlow)[1], testing::StartsWith("1:"));
}

}  // namespace
}  // namespace tavlen::loader
