// Reading a keyed archive of 5,000 classes into the table and into records, and writing it.
// scripts/bench compares the rows with other implementations, which read the same file. As in
// those, freeing the result is not measured.
#include <benchmark/benchmark.h>

#include <string>

#include "SampleClasses.h"
#include "tavlen/foundation/archive/KeyedArchive.h"

namespace {

using Classes = std::vector<std::shared_ptr<tavlen::ObjCClass>>;

const Classes& classes() {
  static const Classes value = tavlen::bench::sampleClasses(5000);
  return value;
}

const std::string& archive() {
  static const std::string bytes = tavlen::encodeKeyedArchive(classes());
  return bytes;
}

/// An archive that the other Foundation can read, which supports at most 65,535 objects.
const std::string& smallArchive() {
  static const std::string bytes = tavlen::encodeKeyedArchive(tavlen::bench::sampleClasses(1000));
  return bytes;
}

template <class Body>
void timeResult(benchmark::State& state, const Body& body) {
  for (auto _ : state) {
    auto result = body();
    benchmark::DoNotOptimize(result);
    state.PauseTiming();
    { const auto released = std::move(result); }
    state.ResumeTiming();
  }
}

void readArchiveTable(benchmark::State& state) {
  timeResult(state, [] { return tavlen::readPropertyList(archive()); });
}

void decodeArchive(benchmark::State& state) {
  const auto decoded = tavlen::decodeKeyedArchive<Classes>(archive());
  for (std::size_t i = 0; i < classes().size(); ++i) {
    if (decoded.size() != classes().size() || !(*decoded[i] == *classes()[i])) {
      state.SkipWithError("the classes are not those that were written");
    }
  }
  timeResult(state, [] { return tavlen::decodeKeyedArchive<Classes>(archive()); });
}

void decodeSmallArchive(benchmark::State& state) {
  timeResult(state, [] { return tavlen::decodeKeyedArchive<Classes>(smallArchive()); });
}

void encodeArchive(benchmark::State& state) {
  timeResult(state, [] { return tavlen::encodeKeyedArchive(classes()); });
}

BENCHMARK(readArchiveTable)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeArchive)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeSmallArchive)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeArchive)->Unit(benchmark::kMillisecond);

}  // namespace
