// The time of a conversion must grow in proportion to the length of the source. JSC_useJIT=0 in the
// environment disables the engine's JIT compilers, as on a device.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "SampleManifest.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace {

/// A processor whose script the engine has fully compiled. That takes many conversions, so the
/// warm-up runs for a fixed time.
tavlen::TweakProcessor& warmProcessor() {
  static tavlen::TweakProcessor processor(TAVLEN_RESOURCE_DIR);
  static const bool warm = [] {
    using Clock = std::chrono::steady_clock;
    const std::string source = tavlen::bench::sampleSource(1 << 20);
    const auto end = Clock::now() + std::chrono::seconds(6);
    while (Clock::now() < end) benchmark::DoNotOptimize(processor.convert(source));
    return true;
  }();
  benchmark::DoNotOptimize(warm);
  return processor;
}

void convertWith(benchmark::State& state, tavlen::TweakProcessor::Map map) {
  const std::string source =
      tavlen::bench::sampleSource(static_cast<std::size_t>(state.range(0)) << 20);
  tavlen::TweakProcessor& processor = warmProcessor();
  for (auto _ : state) benchmark::DoNotOptimize(processor.convert(source, map));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}

void convert(benchmark::State& state) { convertWith(state, tavlen::TweakProcessor::Map::make); }

/// Without the source map, as a check and an installation do it.
void convertCode(benchmark::State& state) {
  convertWith(state, tavlen::TweakProcessor::Map::leaveOut);
}

/// Reads and runs "ob.js", in an engine that has been started.
void load(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(tavlen::TweakProcessor(TAVLEN_RESOURCE_DIR));
}

BENCHMARK(load)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

// Process CPU time includes the threads of the engine's compilers and garbage collector.
BENCHMARK(convert)->ArgName("MB")->Arg(1)->Arg(2)->MinTime(1.5)->MeasureProcessCPUTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(convertCode)
    ->ArgName("MB")
    ->Arg(1)
    ->MinTime(1.5)
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
