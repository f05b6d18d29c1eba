// A keyed archive of 5,000 classes: into the table, into records, and written. scripts/bench sets
// the rows beside its peers, which read the same file. As theirs, a time ends when the result is
// there: letting go of it is not counted.
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

/// What the other Foundation can read: it knows no object past the 65,535th.
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
