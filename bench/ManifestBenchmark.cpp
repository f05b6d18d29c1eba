// Reading and writing a large manifest, and the source of its hooks, beside general JSON libraries
// on the same bytes and values. scripts/bench compares the rows by their names.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

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

/// Reads every value below `value`, so that nothing is left unread; the sum keeps the reading from
/// being removed.
std::size_t walk(simdjson::ondemand::value value) {
  std::size_t sum = 0;
  switch (value.type()) {
    case simdjson::ondemand::json_type::array:
      for (auto element : value.get_array()) sum += walk(element.value());
      return sum;
    case simdjson::ondemand::json_type::object:
      for (auto field : value.get_object()) {
        sum += std::string_view(field.unescaped_key()).size();
        sum += walk(field.value());
      }
      return sum;
    case simdjson::ondemand::json_type::string:
      return std::string_view(value.get_string()).size();
    case simdjson::ondemand::json_type::number:
      return static_cast<std::size_t>(value.get_number().value().as_double() != 0);
    case simdjson::ondemand::json_type::boolean:
      return static_cast<std::size_t>(value.get_bool().value());
    default:
      return static_cast<std::size_t>(value.is_null());
  }
}

void decodeSimdjsonWalk(benchmark::State& state) {
  const simdjson::padded_string text(document());
  simdjson::ondemand::parser parser;
  for (auto _ : state) {
    auto parsed = parser.iterate(text);
    std::size_t sum = 0;
    for (auto field : parsed.get_object()) sum += walk(field.value());
    benchmark::DoNotOptimize(sum);
  }
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
BENCHMARK(decodeSimdjsonWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeTavlen)->Unit(benchmark::kMillisecond);
BENCHMARK(encodeNlohmann)->Unit(benchmark::kMillisecond);
BENCHMARK(hookSourceTavlen)->Unit(benchmark::kMillisecond);

}  // namespace
