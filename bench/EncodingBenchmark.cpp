// Reading and printing type encodings: those of a large library's methods, compared with that
// library's own method signatures, and large encodings of every shape. scripts/bench compares the
// rows by their names.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include "SampleEncodings.h"
#include "SignaturePeer.h"
#include "tavlen/introspection/types/JXTypeCursor.h"

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

/// Reads all types of an encoding and returns their number.
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

/// Makes the allocator keep freed memory. By default it returns large blocks to the system, and
/// small ones above a threshold, which lies between the trees of 1 MB and those of 2 MB.
void keepMemory() {
  (void)mallopt(M_MMAP_MAX, 0);
  (void)mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

/// The CPU time in seconds for reading `text` and printing it into `printed`, `times` times.
double timeOf(const std::string& text, std::string& printed, int times = 1) {
  const std::clock_t begin = std::clock();
  for (int i = 0; i < times; ++i) {
    const auto type = tavlen::JXTypeForEncoding(text);
    printed.clear();
    type->appendHead(printed, false);
    type->appendTail(printed);
    benchmark::DoNotOptimize(printed.data());
  }
  return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// The growth of the time with the size. The compared times are measured one right after the other,
/// because the load of the machine varies.
void growth(benchmark::State& state, const SampleEncoding& sample) {
  keepMemory();
  const std::string small = sample.text(10'000);
  const std::string one = sample.text(1'000'000);
  const std::string two = sample.text(2'000'000);
  std::string printed;
  timeOf(two, printed);  // gets the memory
  for (auto _ : state) {
    const double before = timeOf(one, printed);
    const double twice = timeOf(two, printed);
    const double once = (before + timeOf(one, printed)) / 2;
    const double parts = timeOf(small, printed, 100);
    state.counters["twoOverOne"] = twice / once;
    state.counters["oneOverParts"] = once / parts;
    state.counters["milliseconds"] = once * 1000;
  }
}

BENCHMARK(methodsTavlen)->Unit(benchmark::kMillisecond);
BENCHMARK(methodsSignatures)->Unit(benchmark::kMillisecond);

const bool kAreRegistered = [] {
  for (const SampleEncoding& sample : tavlen::bench::sampleEncodings()) {
    benchmark::RegisterBenchmark(("growth/" + sample.name).c_str(), growth, sample)->Iterations(1);
  }
  return true;
}();

}  // namespace
