// Texts of tweaks come from other people. A text that can be read can be written, and reads back as
// the same manifest; all problems have a place. Memory and time stay in proportion to its bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/tweaks/HookCheck.h"
#include "tavlen/tweaktext/TweakTextReader.h"
#include "tavlen/tweaktext/TweakTextWriter.h"

using namespace tavlen;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

std::optional<TweakText> readWithin(const fuzz::Budget& budget, std::string_view bytes) {
  std::optional<TweakText> text;
  try {
    fuzz::requireWithin(budget, bytes.size(), [&] { text = readTweakText(bytes); });
  } catch (const TOMLError& error) {
    require(!error.text().empty() && error.position().line > 0);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  // An element of an array, which has two bytes, becomes a node of the library, one of ours, and a
  // parameter with its places.
  fuzz::Budget budget;
  budget.bytesPerByte = 512;
  const std::optional<TweakText> text = readWithin(budget, bytes);
  if (!text) return 0;
  const auto& hooks = text->manifest._hooks;
  for (std::size_t i = 0; i < hooks.size(); ++i) {
    for (const HookProblem& problem : problemsOf(*hooks[i])) {
      require(text->placeOf(i, problem.place).line > 0 &&
              !documentPath(*hooks[i], problem.place).empty());
    }
  }
  const std::string written = writeTweakText(text->manifest, {});
  const TweakText again = readTweakText(written);
  require(writeTweakText(again.manifest, {}) == written);
  return 0;
}
