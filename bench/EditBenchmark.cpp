// One edit of a parameter in a stored manifest of 10,000 hooks, and the steps of which it consists:
// decoding, encoding and replacing the manifest. scripts/bench compares the rows by their names.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

#include "SampleManifest.h"
#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/editing/RootParameterManager.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace {

constexpr std::size_t kHookCount = 10'000;
constexpr std::size_t kEdited = kHookCount / 2;
constexpr const char* kManifestFile = "Manifest.json";

/// A manifest in which the edited hook's first argument is an array in an array.
tavlen::TweakFile::Manifest manifest() {
  auto sample = tavlen::bench::sampleManifest(kHookCount);
  const auto inner = tavlen::ArrayParameter::withItems({tavlen::ValueParameter<std::int64_t>{1}});
  sample._hooks[kEdited].value()._args[0].value = tavlen::ArrayParameter::withItems({inner});
  return sample;
}

/// The sample, stored in a temporary folder.
class StoredSample {
 public:
  StoredSample() {
    tavlen::replaceFile(folder_.path() / kManifestFile, document_);
    tweak_ = tavlen::TweakFile::at(folder_.path());
  }

  const std::string& document() const { return document_; }
  std::filesystem::path spareFile() const { return folder_.path() / "spare"; }

  /// The manager of the parameter inside `depth` arrays.
  std::shared_ptr<const tavlen::ParameterManager> managerAt(std::int64_t depth) const {
    const auto identity = tweak_->manifest()._hooks[kEdited].value().identity();
    auto link = tavlen::RootParameterManager(tweak_->managerFor(identity), 0).shared();
    for (; depth > 0; --depth)
      link = tavlen::ArrayParameterManager(link->typed<tavlen::ArrayParameter>(), 0).shared();
    return link;
  }

 private:
  tavlen::TemporaryDirectory folder_{std::filesystem::temp_directory_path()};
  std::string document_ = tavlen::encodeJSON(manifest());
  std::shared_ptr<tavlen::TweakFile> tweak_;
};

const StoredSample& sample() {
  static const StoredSample stored;
  return stored;
}

void edit(benchmark::State& state) {
  const auto manager = sample().managerAt(state.range(0));
  const tavlen::Parameter parameter = manager->parameter();
  for (auto _ : state) manager->setParameter(parameter);
}

void partsOfEdit(benchmark::State& state) {
  const std::filesystem::path file = sample().spareFile();
  const auto value = tavlen::decodeJSON<tavlen::TweakFile::Manifest>(sample().document());
  for (auto _ : state) {
    for (std::int64_t i = 0; i < 2 + state.range(0); ++i) {
      benchmark::DoNotOptimize(
          tavlen::decodeJSON<tavlen::TweakFile::Manifest>(sample().document()));
    }
    tavlen::replaceFile(file, tavlen::encodeJSON(value));
  }
}

// Wall-clock time, because replacing the file waits for the disk.
BENCHMARK(edit)->DenseRange(0, 2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(partsOfEdit)->DenseRange(0, 2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
