// Listing and searching a store of many small tweaks, compared with a loop that only reads the same
// files. scripts/bench compares the rows by their names.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "SampleManifest.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/TweakFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTweakCount = 10'000;

/// A device tree with a store of tweaks with one hook each, and with names of typical length.
class Store {
 public:
  Store() {
    std::string pattern = (fs::temp_directory_path() / "tavlen-store-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    root_ = pattern;
    tavlen::DeviceRoot::setShared(tavlen::DeviceRoot(root_));
    const std::vector<tavlen::Hook> hooks = tavlen::bench::sampleHooks(kTweakCount);
    for (std::size_t i = 0; i < kTweakCount; ++i) writeTweak(i, hooks[i]);
    tweaks_ = tavlen::TweakManager::allTweaks();
  }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;
  ~Store() { fs::remove_all(root_); }

  const std::vector<std::shared_ptr<tavlen::TweakProtocol>>& tweaks() const { return tweaks_; }

 private:
  /// Writes without the library, which would wait for the disk each time.
  static void writeTweak(std::size_t number, const tavlen::Hook& hook) {
    tavlen::TweakFile::Manifest manifest;
    manifest.configuration = {"Tweak number " + std::to_string(number), tavlen::TweakColor::darkRed,
                              "com.example.app" + std::to_string(number % 50), std::nullopt};
    manifest.setHooks({hook});
    const fs::path folder = tavlen::TweakFile::uniqueTweakURL();
    fs::create_directories(folder);
    std::ofstream(folder / "Manifest.json") << tavlen::encodeJSON(manifest);
  }

  fs::path root_;
  std::vector<std::shared_ptr<tavlen::TweakProtocol>> tweaks_;
};

const Store& store() {
  static const Store store;
  return store;
}

/// Reads all manifests, one after another, and returns the number of their bytes.
std::size_t readAllFiles(const std::string& folder) {
  std::size_t bytes = 0;
  std::vector<char> buffer;
  std::string path;
  DIR* const entries = ::opendir(folder.c_str());
  while (const dirent* entry = ::readdir(entries)) {
    if (entry->d_name[0] == '.') continue;
    path.assign(folder).append("/").append(&entry->d_name[0]).append("/Manifest.json");
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) std::abort();
    buffer.resize(static_cast<std::size_t>(status.st_size));
    bytes += static_cast<std::size_t>(::read(descriptor, buffer.data(), buffer.size()));
    ::close(descriptor);
  }
  ::closedir(entries);
  return bytes;
}

void readFiles(benchmark::State& state) {
  store();
  const std::string folder = tavlen::TweaksDirectory::url().string();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = readAllFiles(folder);
  state.counters["bytesPerTweak"] = static_cast<double>(bytes) / kTweakCount;
}

void allTweaks(benchmark::State& state) {
  store();
  for (auto _ : state) {
    if (tavlen::TweakManager::allTweaks().size() != kTweakCount) {
      state.SkipWithError("not all tweaks were listed");
    }
  }
}

void listTweaks(benchmark::State& state) {
  store();
  for (auto _ : state) benchmark::DoNotOptimize(tavlen::TweakManager::listedTweaks());
}

void sortTweaks(benchmark::State& state) {
  store();
  for (auto _ : state) {
    auto tweaks = tavlen::TweakManager::listedTweaks();
    tavlen::sortByName(tweaks);
    benchmark::DoNotOptimize(tweaks);
  }
}

void search(benchmark::State& state) {
  const auto& tweaks = store().tweaks();
  for (auto _ : state) {
    std::size_t found = 0;
    for (const auto& tweak : tweaks) found += tweak->isShownInSearchFor("NUMBER 77");
    if (found != 111) state.SkipWithError("not the tweaks of that name were found");
  }
}

}  // namespace

BENCHMARK(readFiles)->Unit(benchmark::kMillisecond);
BENCHMARK(allTweaks)->Unit(benchmark::kMillisecond);
BENCHMARK(listTweaks)->Unit(benchmark::kMillisecond);
BENCHMARK(sortTweaks)->Unit(benchmark::kMillisecond);
BENCHMARK(search)->Unit(benchmark::kMillisecond);
