#include "tools/loader/preload/EngineSignals.h"

#include <dlfcn.h>

#include <csignal>
#include <cstdlib>
#include <utility>

namespace tavlen::loader {

EngineSignals::EngineSignals() {
  // The function is exported but not declared, and older engines lack it. A variable would do the
  // same, but newer engines report it as an unknown option.
  using Configure = bool (*)(int signal);
  if (const auto configure =
          reinterpret_cast<Configure>(::dlsym(RTLD_DEFAULT, "JSConfigureSignalForGC")))
    (void)configure(SIGRTMAX);
  for (const auto& [name, value] :
       {std::pair("JSC_useWasmFaultSignalHandler", "0"), std::pair("JSC_usePollingTraps", "1")}) {
    // NOLINTBEGIN(concurrency-mt-unsafe): before main
    if (std::getenv(name) != nullptr || ::setenv(name, value, 0) != 0) continue;
    // NOLINTEND(concurrency-mt-unsafe)
    variables_.push_back(name);
  }
}

EngineSignals::~EngineSignals() {
  for (const char* name : variables_) (void)::unsetenv(name);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace tavlen::loader
