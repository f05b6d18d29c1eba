#include "tavlen/tweaks/ResourceUse.h"

#include <filesystem>
#include <map>
#include <variant>

#include "tavlen/foundation/text/NameSearch.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/HookCheck.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> fileNames(const std::vector<std::string>& paths) {
  std::vector<std::string> names;
  names.reserve(paths.size());
  for (const std::string& path : paths) names.push_back(fs::path(path).filename().string());
  return names;
}

/// What a parameter says to those who look for names in it; null if it is no text.
const std::string* textIn(const Parameter& parameter) {
  if (const auto* code = std::get_if<CodeParameter>(&parameter)) return &code->code;
  if (const auto* text = std::get_if<ValueParameter<std::string>>(&parameter)) return &text->value;
  if (const auto* url = std::get_if<URLParameter>(&parameter)) return &url->string;
  return nullptr;
}

class Counter {
 public:
  explicit Counter(const std::vector<std::string>& resources)
      : uses_(resources.size()), names_(fileNames(resources)) {
    for (std::size_t i = 0; i < resources.size(); ++i) places_.emplace(resources[i], i);
  }

  void add(const Hook& hook, std::size_t index) {
    for (const auto& [argument, box] : hook._args) {
      forEachParameter(
          box.value, [&, key = argument](const Parameter& each, const ParameterPath& path) {
            const auto use = [&](std::size_t resource) {
              add(resource, [&] {
                return "hooks[" + std::to_string(index) + "]." +
                       documentPath(hook, {HookPlace::Part::value, key, path});
              });
            };
            if (const std::string* text = textIn(each)) return names_.search(*text, use);
            const std::string* name = resourceNameIn(each);
            if (name == nullptr) return;
            const auto place = places_.find(fs::path(*name).lexically_normal().string());
            if (place != places_.end()) use(place->second);
          });
    }
  }

  void addScript(std::string_view script) {
    names_.search(script, [&](std::size_t resource) {
      add(resource, [] { return std::string(TweakFile::scriptFile); });
    });
  }

  std::vector<ResourceUse> take() { return std::move(uses_); }

 private:
  template <class Place>
  void add(std::size_t resource, Place place) {
    if (uses_[resource].count++ == 0) uses_[resource].first = place();
  }

  std::vector<ResourceUse> uses_;
  NameSearch names_;
  std::map<std::string, std::size_t> places_;
};

}  // namespace

const std::string* resourceNameIn(const Parameter& parameter) {
  if (const auto* data = std::get_if<DataParameter>(&parameter)) return &data->filename;
  if (const auto* image = std::get_if<ImageParameter>(&parameter)) return &image->filename;
  return nullptr;
}

std::vector<ResourceUse> usesOf(const std::vector<std::string>& resources,
                                const TweakFile::Manifest& manifest, std::string_view script) {
  Counter counter(resources);
  for (std::size_t i = 0; i < manifest._hooks.size(); ++i) {
    if (manifest._hooks[i]) counter.add(*manifest._hooks[i], i);
  }
  counter.addScript(script);
  return counter.take();
}

}  // namespace tavlen
