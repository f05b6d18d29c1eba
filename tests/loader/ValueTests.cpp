// Random values of random types, by value and through hooked calls, against the bytes that were
// written.
#include <ffi.h>
#include <gmock/gmock.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/loader/LoadedTweak.h"
#include "tools/loader/types/CallSignature.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {
namespace {

using Bytes = std::vector<std::byte>;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
  }

  std::string type(unsigned depth) {
    constexpr std::string_view kScalars = "BcCsSiIlLqQfdD#:^r*";
    const std::size_t kind = below(depth == 0 ? 8 : 10);
    if (kind < 8) {
      const std::size_t at = below(kScalars.size() - 1);
      return kScalars[at] == '^' ? "^v" : kScalars[at] == 'r' ? "r*" : std::string(1, kScalars[at]);
    }
    std::string text = "{S=";
    for (std::size_t members = 1 + below(4); members > 0; --members)
      text += below(6) == 0 ? "[" + std::to_string(1 + below(3)) + type(depth - 1) + "]"
                            : type(depth - 1);
    return text + "}";
  }

  /// A value of the type, at `memory`, whose other bytes stay as they are.
  void fill(const ValueType& type, std::byte* memory) {
    using Kind = ValueType::Kind;
    switch (type.kind()) {
      case Kind::structure:
      case Kind::array:
        for (const auto& member : type.members()) fill(*member.type, memory + member.offset);
        return;
      case Kind::boolean:
        return put(memory, static_cast<std::uint8_t>(below(2)));
      case Kind::real:
        if (type.size() == sizeof(float)) return put(memory, static_cast<float>(real()));
        return put(memory, real());
      case Kind::longReal:
        return put(memory, static_cast<long double>(real()));
      case Kind::class_:
        return put(memory, ObjCRuntime::classNamed(below(2) == 0 ? "NSObject" : "NSString"));
      case Kind::selector:
        return put(memory, ObjCRuntime::selectorNamed(below(2) == 0 ? "init" : "a:b:"));
      case Kind::text:
        return put(memory, below(4) == 0 ? nullptr : "text");
      case Kind::pointer:
        return put(memory, below(4) == 0 ? nullptr : static_cast<void*>(this));
      default:
        for (std::size_t i = 0; i < type.size(); ++i)
          memory[i] = static_cast<std::byte>(below(256));
        // Small values and the ends of the range are rarer than they matter.
        if (below(3) == 0) std::memset(memory, below(2) == 0 ? 0 : 0xFF, type.size());
    }
  }

 private:
  double real() {
    return std::ldexp(static_cast<double>(below(1U << 20)) - (1 << 19),
                      static_cast<int>(below(40)) - 20);
  }
  template <class T>
  static void put(std::byte* memory, T value) {
    std::memcpy(memory, &value, sizeof(T));
  }

  std::mt19937 engine_;
};

/// Whether the values are the same: padding does not count, and a text is compared by its
/// characters.
bool isSame(const ValueType& type, const std::byte* left, const std::byte* right) {
  if (type.isAggregate()) {
    return std::all_of(type.members().begin(), type.members().end(),
                       [&](const ValueType::Member& member) {
                         return isSame(*member.type, left + member.offset, right + member.offset);
                       });
  }
  if (type.kind() == ValueType::Kind::text) {
    const char* a = nullptr;
    const char* b = nullptr;
    std::memcpy(&a, left, sizeof(a));
    std::memcpy(&b, right, sizeof(b));
    return a == nullptr || b == nullptr ? a == b : std::strcmp(a, b) == 0;
  }
  // Of the 16 bytes of a long double on this machine, 10 hold it.
  constexpr std::size_t kLongReal = 10;
  return std::memcmp(left, right,
                     type.kind() == ValueType::Kind::longReal ? kLongReal : type.size()) == 0;
}

/// The code of a method that keeps its arguments and returns a given value.
struct Callee {
  const CallSignature& signature;
  Bytes result;
  std::vector<Bytes> received = {};

  static void enter(ffi_cif* /*cif*/, void* result, void** arguments, void* self) {
    auto& callee = *static_cast<Callee*>(self);
    callee.received.clear();
    for (std::size_t i = 0; i < callee.signature.arguments().size(); ++i) {
      const auto* begin = static_cast<const std::byte*>(arguments[i]);
      callee.received.emplace_back(begin, begin + callee.signature.arguments()[i]->size());
    }
    std::memcpy(result, callee.result.data(), callee.result.size());
  }
};

/// A method with random types in a new class, whose hook passes copies of its arguments on, and
/// returns a copy of the result.
void callHooked(Random& random, unsigned number) {
  const std::string resultType = random.below(8) == 0 ? "v" : random.type(2);
  std::string types = resultType + "@:";
  std::string selector = "call";
  std::string copies;
  for (std::size_t count = random.below(11); count > 0; --count) {
    types += random.type(2);
    copies += (copies.empty() ? "" : ", ") +
              ("copy(arguments[" +
               std::to_string(std::count(selector.begin(), selector.end(), ':')) + "])");
    selector += ":";
  }
  const auto signature = CallSignature::from(types);
  Callee callee{*signature, Bytes(signature->resultSize())};
  random.fill(signature->result(), callee.result.data());
  widenResult(signature->result(), callee.result.data());

  const std::string cls = makeClass("Answers");
  void* code = nullptr;
  auto* closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
  ASSERT_EQ(ffi_prep_closure_loc(closure, signature->cif(), &Callee::enter, &callee, code), FFI_OK);
  SEL name = ObjCRuntime::selectorNamed(selector.c_str());
  class_addMethod(ObjCRuntime::classNamed(cls.c_str()), name, reinterpret_cast<IMP>(code),
                  types.c_str());
  const LoadedTweak tweak(
      // A structure is copied, so that it is converted again; so is a result that is one.
      "const copy = v => v && Object.getPrototypeOf(v) === Object.prototype ? {...v} : v;\n"
      "hookClass('" +
      cls + "', {}, {'" + types + "-" + selector + "': function() { return copy(%orig(" + copies +
      ")); }});");

  const ObjCRuntime::AutoreleasePool pool;
  id receiver = make(cls);
  std::vector<Bytes> sent;
  std::vector<void*> places;
  for (const auto& type : signature->arguments()) {
    sent.emplace_back(std::max(type->size(), sizeof(ffi_arg)));
    if (sent.size() == 1) std::memcpy(sent.back().data(), &receiver, sizeof(receiver));
    if (sent.size() == 2) std::memcpy(sent.back().data(), &name, sizeof(name));
    if (sent.size() > 2) random.fill(*type, sent.back().data());
  }
  for (Bytes& bytes : sent) places.push_back(bytes.data());
  Bytes answer(signature->resultSize());
  ffi_call(signature->cif(), ObjCRuntime::implementation(receiver, name), answer.data(),
           places.data());
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake), testing::IsEmpty()) << number << ' ' << types;
  ASSERT_EQ(callee.received.size(), sent.size()) << number << ' ' << types;
  for (std::size_t i = 0; i < sent.size(); ++i)
    EXPECT_TRUE(isSame(*signature->arguments()[i], sent[i].data(), callee.received[i].data()))
        << number << ' ' << types << ' ' << i;
  EXPECT_TRUE(isSame(signature->result(), callee.result.data(), answer.data()))
      << number << ' ' << types;
}

TEST(LoaderValues, PassThroughHooksOfAnySignature) {
  Random random(20);
  for (unsigned i = 0; i < 60; ++i) callHooked(random, i);
}

TEST(LoaderValues, AreTheSameAfterTheScript) {
  const LoadedTweak tweak("");
  const ObjCRuntime::AutoreleasePool pool;
  Random random(7);
  for (int i = 0; i < 5000; ++i) {
    const std::string encoding = random.type(3);
    const auto type = ValueType::from(encoding);
    CallMemory written(type->size());
    CallMemory read(type->size());
    random.fill(*type, written.data());
    writeValue(tweak.loader->engine(), *type,
               readValue(tweak.loader->engine(), *type, written.data()), read.data());
    ASSERT_TRUE(isSame(*type, written.data(), read.data())) << i << ' ' << encoding;
  }
}

TEST(LoaderValues, TypesThatCannotBePassedAreRefusedByName) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"(?=if)", "a union (?=if) cannot be passed"},
      {"{S=b3}", "a bit field b3 cannot be passed"},
      {"{S=}", "an empty structure {S=} cannot be passed"},
      {"{S}", "a structure without a body {S} cannot be passed"},
      {"jd", "a complex number d cannot be passed"},
      {"t", "the type t cannot be passed"},
      {"[0i]", ""},
      {"{S=[2000i]}", "an array of that length [2000i] cannot be passed"},
  };
  for (const auto& [encoding, expected] : cases) {
    std::string message;
    try {
      (void)ValueType::from(encoding);
    } catch (const UnsupportedType& error) {
      message = error.what();
    }
    EXPECT_EQ(message, expected) << encoding;
  }
}

}  // namespace
}  // namespace tavlen::loader
