// Reading and writing a large manifest, and generating the source of its hooks, compared with a
// general JSON library on the same bytes and values, and with a reader into the same records on
// another parser. scripts/bench compares the rows by their names.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ManifestPeer.h"
#include "SampleManifest.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaks/HookSource.h"

namespace {

constexpr std::size_t kHookCount = 10'000;

const tavlen::TweakFile::Manifest& manifest() {
  static const auto value = tavlen::bench::sampleManifest(kHookCount);
  return value;
}

const std::string& document() {
  static const std::string text = tavlen::encodeJSON(manifest());
  return text;
}

void setBytes(benchmark::State& state, std::size_t bytesPerIteration) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesPerIteration));
}

void decodeTavlen(benchmark::State& state) {
  const std::string& text = document();
  if (tavlen::decodeJSON<tavlen::TweakFile::Manifest>(text) != manifest())
    state.SkipWithError("the manifest is not the one that was written");
  for (auto _ : state)
    benchmark::DoNotOptimize(tavlen::decodeJSON<tavlen::TweakFile::Manifest>(text));
  setBytes(state, text.size());
}

void decodeNlohmann(benchmark::State& state) {
  const std::string& text = document();
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(text));
  setBytes(state, text.size());
}

/// Whether the processor has what ManifestPeer.cpp is compiled for. Says so if it has not.
bool canRunPeer(benchmark::State& state) {
#if defined(__x86_64__)
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma") ||
      !__builtin_cpu_supports("bmi") || !__builtin_cpu_supports("bmi2")) {
    state.SkipWithError("not measured: the processor lacks AVX2, FMA or BMI");
    return false;
  }
#else
  (void)state;
#endif
  return true;
}

/// With a parser and a padded copy of the text for each manifest: a caller of decodeJSON() has one.
void decodePeerFresh(benchmark::State& state) {
  if (!canRunPeer(state)) return;
  const std::string& text = document();
  if (tavlen::bench::ManifestPeer(text).read() != manifest())
    state.SkipWithError("the manifest is not the one that was written");
  for (auto _ : state) benchmark::DoNotOptimize(tavlen::bench::ManifestPeer(text).read());
  setBytes(state, text.size());
}

/// With both kept from one manifest to the next.
void decodePeerKept(benchmark::State& state) {
  if (!canRunPeer(state)) return;
  tavlen::bench::ManifestPeer peer(document());
  for (auto _ : state) benchmark::DoNotOptimize(peer.read());
  setBytes(state, document().size());
}

void encodeTavlen(benchmark::State& state) {
  std::size_t size = 0;
  for (auto _ : state) {
    const std::string text = tavlen::encodeJSON(manifest());
    benchmark::DoNotOptimize(text.data());
    size = text.size();
  }
  setBytes(state, size);
}

void encodeNlohmann(benchmark::State& state) {
  const auto values = nlohmann::json::parse(document());
  std::size_t size = 0;
  for (auto _ : state) {
    const std::string text = values.dump();
    benchmark::DoNotOptimize(text.data());
    size = text.size();
  }
  setBytes(state, size);
}

void hookSourceTavlen(benchmark::State& state) {
  const std::vector<tavlen::Hook> hooks = manifest().hooks();
  std::size_t size = 0;
  for (auto _ : state) {
    const tavlen::HookSource source = tavlen::generateHookSource(hooks);
    benchmark::DoNotOptimize(source.text.data());
    size = source.text.size();
  }
  setBytes(state, size);
}

BENCHMARK(decodeTavlen)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeNlohmann)->Unit(benchmark::kMillisecond);
BENCHMARK(decodePeerFresh)->Unit(benchmark::kMillisecond);
BENCHMARK(decodePeerKept)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeTavlen)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeNlohmann)->Unit(benchmark::kMillisecond);
BENCHMARK(hookSourceTavlen)->Unit(benchmark::kMillisecond);

}  // namespace
