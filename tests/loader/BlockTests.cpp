// Blocks between scripts and the program, which calls them by their public binary interface.
#include <Block.h>
#include <gmock/gmock.h>

#include <string>
#include <thread>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tests/loader/LoadedTweak.h"

namespace tavlen::loader {
namespace {

using testing::IsEmpty;

/// What the program has kept, as an object does that takes a block for later.
void* kept = nullptr;

void keep(id /*self*/, SEL /*selector*/, void* block) { kept = _Block_copy(block); }
id apply(id /*self*/, SEL /*selector*/, void* block, id value) {
  return reinterpret_cast<id (*)(void*, id)>(ObjCBlock::codeOf(block))(block, value);
}
void* give(id /*self*/, SEL /*selector*/) { return nullptr; }

/// A new class with methods that take and give blocks.
std::string makeBlockClass() {
  std::string name = makeClass("Answers");
  const auto add = [&](const char* selector, auto* code, const char* types) {
    class_addMethod(ObjCRuntime::classNamed(name.c_str()), ObjCRuntime::selectorNamed(selector),
                    reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(code)), types);
  };
  add("keep:", &keep, "v24@0:8@?<@@?@>16");
  add("apply:to:", &apply, "@32@0:8@?16@24");
  add("give", &give, "@?16@0:8");
  return name;
}

id called(void* block, const char* text) {
  return apply(nullptr, nullptr, block, ObjCRuntime::makeString(text));
}

int liveObjects() { return ObjCRuntime::send<int>(ObjCRuntime::classNamed("Counted"), "live"); }

TEST(LoaderBlock, CarriesValuesBothWaysWhereTheEncodingHasItsTypes) {
  const std::string cls = makeBlockClass();
  const LoadedTweak tweak("hookClass('" + cls + R"(', {}, {
    '@32@0:8@?<@@?@>16@24-apply:to:': function(block, value) { return block(block(%orig)) },
    '@?<@@?@>16@0:8-give': function() { return text => text + 'given' },
  });)");
  const ObjCRuntime::AutoreleasePool pool;
  const ObjCBlock own = makeBlock<id(id)>([](id value) {
    return ObjCRuntime::send(value, "stringByAppendingString:", ObjCRuntime::makeString("!"));
  });
  id receiver = make(cls);
  id answer = ObjCRuntime::send(receiver, "apply:to:", own.get(), ObjCRuntime::makeString("text"));
  EXPECT_EQ(ObjCRuntime::text(answer), "text!!!");
  auto* given = ObjCRuntime::send<void*>(receiver, "give");
  tweak.collect();
  ASSERT_NE(given, nullptr);
  EXPECT_EQ(ObjCRuntime::text(called(given, "text ")), "text given");
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake), IsEmpty());
}

TEST(LoaderBlock, LivesAsLongAsTheProgramKeepsIt) {
  const std::string cls = makeBlockClass();
  const LoadedTweak tweak("hookClass('" + cls + R"(', {}, {
    '@24@0:8@16-answer:': function() {
      const counted = [[Counted alloc] init];
      [this keep:text => text + [counted tag]];
      return null;
    },
  });)");
  const int before = liveObjects();
  {
    const ObjCRuntime::AutoreleasePool pool;
    ObjCRuntime::send(make(cls), "answer:", static_cast<id>(nullptr));
  }
  tweak.collect();
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(liveObjects(), before + 1);
  std::thread([] {
    const ObjCRuntime::AutoreleasePool pool;
    EXPECT_EQ(ObjCRuntime::text(called(kept, "tag ")), "tag 7");
  }).join();
  _Block_release(kept);
  tweak.collect();  // gives up the function
  tweak.collect();  // and now what it has captured
  EXPECT_EQ(liveObjects(), before);
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake), IsEmpty());
}

}  // namespace
}  // namespace tavlen::loader
