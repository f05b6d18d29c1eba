// The start of the loader in a program of this machine. The library is loaded before the program's
// classes are; what it wraps are the two functions that tell when they are: the start of the main
// function, and the registration of a module.
#include <dlfcn.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "tavlen/foundation/files/DescriptorSnapshot.h"
#include "tavlen/foundation/files/ExecutablePath.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/tweaks/LoaderSettings.h"
#include "tools/loader/TweakLoader.h"
#include "tools/loader/hooks/Watch.h"
#include "tools/loader/preload/EngineSignals.h"
#include "tools/loader/preload/EventSocket.h"
#include "tools/loader/preload/InfoOverlay.h"
#include "tools/loader/preload/StandInClasses.h"

namespace tavlen::loader {

namespace {

namespace fs = std::filesystem;

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

template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

/// The variable, which is removed: programs that this one starts get none of them.
std::optional<std::string> taken(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): before main
  if (value == nullptr) return std::nullopt;
  std::string text = value;
  (void)::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
  return text;
}

/// Removes the loader from LD_PRELOAD, and leaves what others put there.
void leavePreload(std::string_view library) {
  constexpr const char* kPreload = "LD_PRELOAD";
  std::string rest;
  const std::string list = taken(kPreload).value_or(std::string());
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find_first_of(": ", begin), list.size());
    const std::string_view entry = std::string_view(list).substr(begin, end - begin);
    if (!entry.empty() && entry != library) rest.append(rest.empty() ? "" : ":").append(entry);
    begin = end + 1;
  }
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  if (!rest.empty()) (void)::setenv(kPreload, rest.c_str(), 1);
}

/// What the command asked for.
struct Settings {
  fs::path tweak;
  int events;
  bool isTracing;
  std::chrono::milliseconds limit;
};

/// Reads and removes the settings. Returns nothing if they are not for this program.
std::optional<Settings> takeSettings() {
  const auto program = taken(loaderSettings::kProgram);
  const auto library = taken(loaderSettings::kLibrary);
  const auto tweak = taken(loaderSettings::kTweak);
  const auto events = taken(loaderSettings::kEvents);
  const bool isTracing = taken(loaderSettings::kTrace).has_value();
  const auto limit = taken(loaderSettings::kLimit);
  if (library) leavePreload(*library);
  if (!program || !tweak || !events || !limit || executablePath() != *program) return std::nullopt;
  return Settings{*tweak, std::stoi(*events), isTracing,
                  std::chrono::milliseconds(std::stol(*limit))};
}

TweakLoader& makeLoader(const Settings& settings, EventReceiver& receiver) {
  TweakCode code{readFile(settings.tweak / "code.js"), readFile(settings.tweak / "code.js.map"),
                 (settings.tweak / "Resources").string()};
  const EngineSignals signals;
  const DescriptorSnapshot programs;
  TweakLoader& loader = TweakLoader::make(std::move(code), receiver, settings.isTracing);
  programs.hideOthers();  // from the programs that this one starts
  return loader;
}

void start(const Settings& settings) {
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
    if (const auto settings = takeSettings()) start(*settings);
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
  kNext(module);
  if (TweakLoader* loader = theLoader.load()) loader->imageLoaded();
}

}  // extern "C"
