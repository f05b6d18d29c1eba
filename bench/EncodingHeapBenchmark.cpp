// The heap use of type trees. The results are the counters; the times are meaningless, because
// allocations are counted.
#include <benchmark/benchmark.h>

#include <string>

#include "HeapUse.h"
#include "SampleEncodings.h"
#include "tavlen/introspection/types/JXType.h"

namespace {

using tavlen::bench::HeapUse;
using tavlen::bench::SampleEncoding;

double ratio(std::size_t part, std::size_t whole) {
  return static_cast<double>(part) / static_cast<double>(whole);
}

void heapOfType(benchmark::State& state, const SampleEncoding& sample) {
  const std::string text = sample.text(1'000'000);
  for (auto _ : state) {
    const std::size_t before = HeapUse::current();
    HeapUse::resetPeak();
    const auto type = tavlen::JXTypeForEncoding(text);
    state.counters["peakPerByte"] = ratio(HeapUse::peak() - before, text.size());
    state.counters["heldPerByte"] = ratio(HeapUse::current() - before, text.size());
    state.counters["read"] = ratio(type->encoding().size(), text.size());
  }
}

const bool kAreRegistered = [] {
  for (const SampleEncoding& sample : tavlen::bench::sampleEncodings()) {
    benchmark::RegisterBenchmark(("heapOfType/" + sample.name).c_str(), heapOfType, sample)
        ->Iterations(1);
  }
  return true;
}();

}  // namespace
