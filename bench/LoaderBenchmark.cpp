// What a hooked call costs, next to the original and to the parts of the way: closure, object,
// function, call by signature.
#include <benchmark/benchmark.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "tavlen/foundation/objc/ObjCRuntime.h"
#include "tavlen/tweaks/TweakProcessor.h"
#include "tools/loader/TweakLoader.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/values/ArgumentFrame.h"

namespace tavlen::loader {
namespace {

/// Reports mistakes, after which a measurement means nothing.
class Mistakes : public EventReceiver {
 public:
  void receive(const LoaderEvent& event) override {
    if (event.event != LoaderEvent::kHooked) text = event.event + ' ' + event.message.value_or("");
  }

  std::string text;
};

Mistakes& mistakes() {
  static Mistakes shared;
  return shared;
}

/// A tweak that hooks what bench/LoaderPeer.m defines as `param set -1` does, and one without
/// %orig.
Engine& engine() {
  static Engine& shared = [&]() -> Engine& {
    const auto output = TweakProcessor(TAVLEN_RESOURCE_DIR).convert(R"(hookClass("HookedPeer", {}, {
	"i16@0:8-number": function() {
		%orig;
		return 5;
	},
	"d16@0:8-real": function() {
		%orig;
		return 0.5;
	},
	"@16@0:8-text": function() {
		%orig;
		return "constant";
	},
	"{CGRect={CGPoint=dd}{CGSize=dd}}16@0:8-rect": function() {
		%orig;
		return ({origin: {x: 1, y: 2}, size: {width: 3, height: 4}});
	},
	"i16@0:8-other": function() { return 5; },
	"@16@0:8-itself": function() { return %orig; },
});)");
    auto& made = TweakLoader::make({output.code, output.map, "/"}, mistakes(), false);
    made.run();
    return made.engine();
  }();
  return shared;
}

struct Rect {
  double a, b, c, d;
};

/// Sends a message as compiled code does.
template <class Result>
void send(benchmark::State& state, const char* cls, const char* selector) {
  engine();
  const ObjCRuntime::AutoreleasePool outer;
  const Class made = ObjCRuntime::classNamed(cls);
  id object = ObjCRuntime::send(ObjCRuntime::send(made, "alloc"), "init");
  SEL name = ObjCRuntime::selectorNamed(selector);
  constexpr int kCallsInPool = 1000;
  while (state.KeepRunningBatch(kCallsInPool)) {
    const ObjCRuntime::AutoreleasePool pool;
    for (int i = 0; i < kCallsInPool; ++i) {
      using Method = Result (*)(id, SEL);
      benchmark::DoNotOptimize(
          reinterpret_cast<Method>(ObjCRuntime::implementation(object, name))(object, name));
    }
  }
  if (!mistakes().text.empty()) state.SkipWithError(mistakes().text.c_str());
}

void original(benchmark::State& state) { send<int>(state, "Peer", "number"); }
void hookedInt(benchmark::State& state) { send<int>(state, "HookedPeer", "number"); }
void hookedDouble(benchmark::State& state) { send<double>(state, "HookedPeer", "real"); }
void hookedString(benchmark::State& state) { send<id>(state, "HookedPeer", "text"); }
void hookedRect(benchmark::State& state) { send<Rect>(state, "HookedPeer", "rect"); }
void hookedWithoutOriginal(benchmark::State& state) { send<int>(state, "HookedPeer", "other"); }
void hookedObject(benchmark::State& state) { send<id>(state, "HookedPeer", "itself"); }
BENCHMARK(original);
BENCHMARK(hookedInt);
BENCHMARK(hookedDouble);
BENCHMARK(hookedString);
BENCHMARK(hookedRect);
BENCHMARK(hookedWithoutOriginal);
BENCHMARK(hookedObject);

/// The memory of this process, in bytes.
double residentBytes() {
  std::ifstream file("/proc/self/statm");
  long size = 0;
  long resident = 0;
  file >> size >> resident;
  return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

/// Ten million calls, of which the first million fills the heap of the engine.
void memoryOfCalls(benchmark::State& state) {
  constexpr int kWarming = 1'000'000;
  constexpr int kCalls = 9'000'000;
  engine();
  id object =
      ObjCRuntime::send(ObjCRuntime::send(ObjCRuntime::classNamed("HookedPeer"), "alloc"), "init");
  const auto call = [object](int count) {
    for (int i = 0; i < count; i += 3) {
      const ObjCRuntime::AutoreleasePool pool;
      benchmark::DoNotOptimize(ObjCRuntime::send<int>(object, "number"));
      benchmark::DoNotOptimize(ObjCRuntime::send(object, "text"));
      benchmark::DoNotOptimize(ObjCRuntime::send(object, "itself"));
    }
    JSGarbageCollect(engine().context());
    return residentBytes();
  };
  for ([[maybe_unused]] auto each : state) {
    const double before = call(kWarming);
    state.counters["growth"] = call(kCalls) - before;
  }
}
BENCHMARK(memoryOfCalls)->Iterations(1)->Repetitions(2)->Unit(benchmark::kSecond);

// The parts

void partClosure(benchmark::State& state) {
  void* code = nullptr;
  auto* closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
  const auto signature = CallSignature::from("i@:");
  const auto enter = [](ffi_cif*, void* result, void**, void*) {
    *static_cast<ffi_arg*>(result) = 5;
  };
  ffi_prep_closure_loc(closure, signature->cif(), enter, nullptr, code);
  for ([[maybe_unused]] auto each : state)
    benchmark::DoNotOptimize(reinterpret_cast<int (*)(void*, void*)>(code)(nullptr, nullptr));
  ffi_closure_free(closure);
}
BENCHMARK(partClosure);

void partObject(benchmark::State& state) {
  for ([[maybe_unused]] auto each : state)
    benchmark::DoNotOptimize(JSObjectMake(engine().context(), nativeClass(),
                                          new Native(engine(), Native::Kind::pointer, nullptr)));
}
BENCHMARK(partObject);

void callScript(benchmark::State& state, const char* source) {
  JSContextRef context = engine().context();
  const JSValueRef function =
      JSEvaluateScript(context, EngineString(source).get(), nullptr, nullptr, 0, nullptr);
  JSValueProtect(context, function);
  for ([[maybe_unused]] auto each : state) {
    benchmark::DoNotOptimize(JSObjectCallAsFunction(context, const_cast<JSObjectRef>(function),
                                                    nullptr, 0, nullptr, nullptr));
  }
  JSValueUnprotect(context, function);
}

void partFunction(benchmark::State& state) { callScript(state, "(function() { return 5; })"); }
BENCHMARK(partFunction);

/// With a call of the loader from the script; the difference to the last one is the way back.
void partFunctionAndBack(benchmark::State& state) {
  callScript(state, "(function() { objc_selector('a'); return 5; })");
}
BENCHMARK(partFunctionAndBack);

void partCallBySignature(benchmark::State& state) {
  const auto signature = CallSignature::from("i@:");
  const auto code = +[](void*, void*) { return 5; };
  ffi_arg result = 0;
  for ([[maybe_unused]] auto each : state) {
    ArgumentFrame frame(*signature);
    frame.setPointer(0, nullptr);
    frame.setPointer(1, nullptr);
    frame.call(reinterpret_cast<void (*)()>(code), &result);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(partCallBySignature);

}  // namespace
}  // namespace tavlen::loader
