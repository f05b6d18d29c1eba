// The heap use of reading a large manifest, and an archive of classes. The results are the
// counters; the times are meaningless, because allocations are counted.
#include <benchmark/benchmark.h>

#include <string>

#include "HeapUse.h"
#include "SampleClasses.h"
#include "SampleManifest.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace {

using tavlen::bench::HeapUse;

constexpr std::size_t kHookCount = 10'000;
constexpr std::size_t kClassCount = 5'000;

const std::string& document() {
  static const std::string text = tavlen::encodeJSON(tavlen::bench::sampleManifest(kHookCount));
  return text;
}

double ratio(std::size_t part, std::size_t whole) {
  return static_cast<double>(part) / static_cast<double>(whole);
}

void heapOfDecoding(benchmark::State& state) {
  const std::string& text = document();
  for (auto _ : state) {
    const std::size_t before = HeapUse::current();
    HeapUse::resetPeak();
    const auto decoded = tavlen::decodeJSON<tavlen::TweakFile::Manifest>(text);
    const std::size_t peak = HeapUse::peak() - before;
    // A copy shows the manifest's net size, without spare capacity of vectors.
    const std::size_t beforeCopy = HeapUse::current();
    const auto copy = decoded;
    const std::size_t held = HeapUse::current() - beforeCopy;
    state.counters["peakPerHeld"] = ratio(peak, held);
    state.counters["heldPerInputByte"] = ratio(held, text.size());
  }
}

void heapOfClasses(benchmark::State& state) {
  using Classes = std::vector<std::shared_ptr<tavlen::ObjCClass>>;
  const std::string archive = tavlen::encodeKeyedArchive(tavlen::bench::sampleClasses(kClassCount));
  for (auto _ : state) {
    const std::size_t before = HeapUse::current();
    HeapUse::resetPeak();
    const auto classes = tavlen::decodeKeyedArchive<Classes>(archive);
    const std::size_t methods = kClassCount * classes.front()->methods.size();
    state.counters["peakPerInputByte"] = ratio(HeapUse::peak() - before, archive.size());
    state.counters["heldPerMethod"] = ratio(HeapUse::current() - before, methods);
  }
}

BENCHMARK(heapOfDecoding)->Iterations(1);
BENCHMARK(heapOfClasses)->Iterations(1);

}  // namespace
