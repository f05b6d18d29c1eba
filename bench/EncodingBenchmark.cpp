// Type encodings read and printed: those of a large library's methods, beside that library's own
// method signatures, and large ones of every shape. scripts/bench compares the rows by their names.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "SampleEncodings.h"
#include "SignaturePeer.h"
#include "tavlen/introspection/JXTypeCursor.h"

namespace {

using tavlen::bench::SampleEncoding;

const std::vector<const char*>& methodEncodings() {
  static const std::vector<const char*> encodings = [] {
    std::size_t count = 0;
    const char* const* first = copyMethodEncodings(&count);
    return std::vector<const char*>(first, first + count);
  }();
  return encodings;
}

/// The number of types.
std::size_t readTypes(const char* encoding) {
  std::size_t types = 0;
  tavlen::JXTypeCursor cursor(encoding);
  while (!cursor.isAtEnd()) {
    const auto type = tavlen::JXTypeWithEncoding(cursor);
    benchmark::DoNotOptimize(type->description());
    ++types;
    tavlen::JXType::numberFromEncoding(cursor);
  }
  return types;
}

std::size_t readTypes() {
  std::size_t types = 0;
  for (const char* encoding : methodEncodings()) types += readTypes(encoding);
  return types;
}

std::size_t readSignatures() {
  return ::readSignatures(methodEncodings().data(), methodEncodings().size());
}

void methodsTavlen(benchmark::State& state) {
  if (methodEncodings().size() < 5000 || readTypes() != readSignatures()) {
    state.SkipWithError("there are other types than in the signatures");
  }
  for (auto _ : state) benchmark::DoNotOptimize(readTypes());
}

void methodsSignatures(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(readSignatures());
}

void large(benchmark::State& state, const SampleEncoding& sample) {
  const std::string text = sample.text(static_cast<std::size_t>(state.range(0)) * 1000);
  for (auto _ : state) {
    const auto type = tavlen::JXTypeForEncoding(text);
    benchmark::DoNotOptimize(type->description());
  }
}

BENCHMARK(methodsTavlen)->Unit(benchmark::kMillisecond);
BENCHMARK(methodsSignatures)->Unit(benchmark::kMillisecond);

const bool kAreRegistered = [] {
  for (const SampleEncoding& sample : tavlen::bench::sampleEncodings()) {
    benchmark::RegisterBenchmark(("large/" + sample.name).c_str(), large, sample)
        ->Unit(benchmark::kMillisecond)
        ->Arg(10)
        ->Arg(1000)
        ->Arg(2000)
        ->MinTime(0.1);
  }
  return true;
}();

}  // namespace
