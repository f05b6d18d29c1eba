// Reading classes from any file gives records of well-formed texts, the same ones however they are
// asked for, or the parser's error; its cost stays in proportion to the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "fuzz/Budget.h"
#include "fuzz/MemoryFile.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/introspection/classes/StaticClassParser.h"

using namespace tavlen;

namespace {

/// The library promises a megabyte and four bytes a byte.
constexpr fuzz::Budget kBudget = {.bytes = 1 << 20, .bytesPerByte = 4, .secondsPerByte = 1e-3};

void require(bool condition) {
  if (!condition) std::abort();
}

void requireWellFormed(std::string_view text) { require(wellFormedUTF8(text) == text); }

void requireWellFormed(const ObjCClass::Methods& methods) {
  for (const auto& each : methods) {
    requireWellFormed(each->selector);
    requireWellFormed(each->encoding);
  }
}

void requireWellFormed(const StaticClassParser::Result& result) {
  for (const auto& each : result.classes) {
    requireWellFormed(each->name);
    for (const SharedText& protocol : each->protocols) requireWellFormed(protocol);
    requireWellFormed(each->methods);
  }
  for (const auto& each : result.categories) {
    requireWellFormed(each.className);
    requireWellFormed(each.name);
    requireWellFormed(each.methods);
  }
  for (const std::string& each : result.diagnostics) requireWellFormed(each);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const Executable executable({}, "/", file.path().substr(1), false);
  const StaticClassParser parser;
  std::optional<StaticClassParser::Result> result;
  try {
    fuzz::requireWithin(kBudget, size, [&] { result = parser.parseImage(executable); });
  } catch (const StaticClassParser::Error&) {
    return 0;
  }
  requireWellFormed(*result);
  if (result->classes.empty()) return 0;
  const ObjCClass& last = *result->classes.back();
  const auto found = parser.parseClassNamed(last.name, executable, nullptr);
  require(found != nullptr && found->name == last.name);
  return 0;
}
