// The stages of a short run of the command, each for the first time in the process. Prints the name
// and the milliseconds of each stage on one line.
#include <chrono>
#include <iostream>

#include "tavlen/foundation/javascript/JavaScriptContext.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace {

template <class Stage>
auto timed(const char* name, Stage&& stage) {
  const auto begin = std::chrono::steady_clock::now();
  auto result = stage();
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
  std::cout << name << '\t' << time.count() << '\n';
  return result;
}

}  // namespace

int main() {
  const auto context = timed("the engine's start", [] {
    auto first = tavlen::JavaScriptContext::make();
    first->evaluate("0", "start.js");
    return first;
  });
  auto processor =
      timed("loading ob.js", [] { return tavlen::TweakProcessor(TAVLEN_RESOURCE_DIR); });
  const auto tweak = timed("opening the tweak", [] {
    return tavlen::TweakFile::at(TAVLEN_EXAMPLES_DIR "/tweaks/Greeting");
  });
  const auto output = timed("the first conversion", [&] { return processor.process(*tweak); });
  return output.code.empty() ? 1 : 0;
}
