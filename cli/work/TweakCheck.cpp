#include "cli/work/TweakCheck.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/HookCheck.h"

namespace tavlen::cli {

namespace {

/// Walks a manifest and collects warnings with their places.
class Checker {
 public:
  explicit Checker(const OpenedTweak& tweak) : tweak_(tweak) {}

  std::vector<Diagnostic> run() {
    checkGlyph();
    const auto& hooks = tweak_.manifest._hooks;
    for (std::size_t i = 0; i < hooks.size(); ++i) {
      if (!hooks[i]) continue;
      const std::string place = "hooks[" + std::to_string(i) + "]";
      checkIdentity(*hooks[i], place);
      for (const HookProblem& problem : problemsOf(*hooks[i]))
        warn(place + "." + documentPath(*hooks[i], problem), problem.text);
      for (const auto& [index, box] : hooks[i]->_args) {
        checkResources(box.value, place + ".args." + std::to_string(index));
      }
    }
    return std::move(warnings_);
  }

 private:
  void warn(const std::string& place, const std::string& text) {
    warnings_.push_back({.severity = Diagnostic::kWarning,
                         .message = text,
                         .file = tweak_.pathOf("Manifest.json"),
                         .place = place});
  }

  void checkGlyph() {
    const auto& glyph = tweak_.manifest.configuration._glyph;
    if (!glyph || isKnownGlyph(*glyph)) return;
    std::string text = "unknown glyph " + described(*glyph);
    if (const auto suggestion = suggestedGlyph(*glyph)) {
      text += "; did you mean " + described(*suggestion) + "?";
    }
    warn("configuration.glyph", text);
  }

  static std::string described(const TweakGlyph& glyph) {
    return "\"" + glyph.icon + "\" in the style \"" + glyph.style + "\"";
  }

  void checkIdentity(const Hook& hook, const std::string& place) {
    const auto [first, added] = places_.try_emplace(hook.identity(), place);
    if (!added) warn(place, "hooks the same method as " + first->second);
  }

  void checkResources(const Parameter& parameter, const std::string& place) {
    forEachParameter(parameter, [&](const Parameter& each, const ParameterPath& path) {
      const auto* data = std::get_if<DataParameter>(&each);
      const auto* image = std::get_if<ImageParameter>(&each);
      if (data == nullptr && image == nullptr) return;
      checkResource(data != nullptr ? data->filename : image->filename,
                    place + documentPath(parameter, path));
    });
  }

  void checkResource(const std::string& name, const std::string& place) {
    const std::filesystem::path folder = tweak_.file->resourcesDir();
    const std::string shown = "the resource \"" + name + "\"";
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, folder, name);
    if (!file) return warn(place + ".filename", shown + " lies outside of Resources");
    if (!std::filesystem::is_regular_file(root.status(*file)))
      warn(place + ".filename", shown + " is missing");
  }

  const OpenedTweak& tweak_;
  std::map<MethodIdentity, std::string> places_;
  std::vector<Diagnostic> warnings_;
};

}  // namespace

std::vector<Diagnostic> warningsFor(const OpenedTweak& tweak) { return Checker(tweak).run(); }

}  // namespace tavlen::cli
