// The start of the loader in a program of this machine. The library is loaded before the program's
// classes are; what it wraps are the two functions that tell when they are: the start of the main
// function, and the registration of a module.
#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <exception>
#include <utility>

#include "tavlen/foundation/files/DescriptorSnapshot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tools/loader/TweakLoader.h"
#include "tools/loader/hooks/Watch.h"
#include "tools/loader/preload/AwaitedClasses.h"
#include "tools/loader/preload/EngineSignals.h"
#include "tools/loader/preload/EventSocket.h"
#include "tools/loader/preload/InfoOverlay.h"
#include "tools/loader/preload/StandInClasses.h"
#include "tools/loader/preload/StartSettings.h"

namespace tavlen::loader {

namespace {

using Main = int (*)(int argc, char** argv, char** environment);
using Start = int (*)(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*rtldFini)(), void* end);
using ExecClass = void (*)(void* module);

#if defined(__x86_64__)
constexpr const char* kFormerVersion = "GLIBC_2.2.5";
#else
constexpr const char* kFormerVersion = "GLIBC_2.17";
#endif

Main programMain = nullptr;
std::atomic<TweakLoader*> theLoader = nullptr;

/// Never destroyed: images may be loaded while the program ends.
AwaitedClasses& awaitedClasses() {
  static auto& shared = *new AwaitedClasses();
  return shared;
}

template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

TweakLoader& makeLoader(const StartSettings& settings, EventReceiver& receiver) {
  TweakCode code{readFile(settings.tweak / "code.js"), readFile(settings.tweak / "code.js.map"),
                 (settings.tweak / "Resources").string()};
  const EngineSignals signals;
  const DescriptorSnapshot programs;
  TweakLoader& loader = TweakLoader::make(std::move(code), receiver, settings.isTracing);
  programs.hideOthers();  // from the programs that this one starts
  return loader;
}

void start(const StartSettings& settings) {
  auto& receiver = *new EventSocket(settings.events);
  defineStandInClasses();
  overlayMainBundle(settings.tweak / "Info.plist");
  TweakLoader& loader = makeLoader(settings, receiver);
  loader.engine().report({.event = LoaderEvent::kStarted});
  theLoader = &loader;
  ::pthread_atfork(nullptr, nullptr, [] { theLoader.load()->engine().stop(); });
  startWatch(loader.engine(), settings.limit);
  loader.run();
}

int runMain(int argc, char** argv, char** environment) {
  try {
    if (const auto& settings = StartSettings::get()) start(*settings);
  } catch (const std::exception&) {
    // Without its package the tweak is not there; the command reports that it did not start.
  }
  return programMain(argc, argv, environment);
}

}  // namespace

}  // namespace tavlen::loader

extern "C" {

[[gnu::visibility("default")]] int tavlenStart(tavlen::loader::Main main, int argc, char** argv,
                                               void (*init)(), void (*fini)(), void (*rtldFini)(),
                                               void* end) __asm__("__libc_start_main");
[[gnu::visibility("default")]] void tavlenExecClass(void* module) __asm__("__objc_exec_class");

int tavlenStart(tavlen::loader::Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                void (*rtldFini)(), void* end) {
  using namespace tavlen::loader;
  programMain = main;
  // A program that brings functions of its own to run before main was linked with the former form
  // of this one.
  const bool isFormer = init != nullptr;
  void* const former =
      isFormer ? ::dlvsym(RTLD_NEXT, "__libc_start_main", kFormerVersion) : nullptr;
  const auto start =
      former != nullptr ? reinterpret_cast<Start>(former) : next<Start>("__libc_start_main");
  return start(&runMain, argc, argv, init, fini, rtldFini, end);
}

void tavlenExecClass(void* module) {
  using namespace tavlen::loader;
  static const auto kNext = next<ExecClass>("__objc_exec_class");
  (void)StartSettings::get();  // Foundation copies the environment when its classes are loaded
  TweakLoader* loader = theLoader.load();
  if (loader != nullptr) awaitedClasses().add(module);
  kNext(module);
  if (loader != nullptr && awaitedClasses().haveCome()) loader->imageLoaded();
}

}  // extern "C"
