#include "cli/work/TweakCheck.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/items/GlyphNames.h"

namespace tavlen::cli {

namespace {

std::size_t colonsOf(const Hook& hook) {
  return static_cast<std::size_t>(std::count(hook.selector.begin(), hook.selector.end(), ':'));
}

/// The types in the hook's signature; nothing if it is malformed.
std::optional<MethodTypes> methodTypes(const Hook& hook) {
  std::optional<MethodTypes> types = splitMethodTypes(hook.signature);
  if (types && types->arguments.size() < 2) types.reset();
  return types;
}

/// Without the receiver and the selector.
std::size_t argumentCount(const MethodTypes& types) { return types.arguments.size() - 2; }

/// Walks a manifest and collects warnings with their places.
class Checker {
 public:
  explicit Checker(const OpenedTweak& tweak) : tweak_(tweak) {}

  std::vector<std::string> run() {
    checkGlyph();
    const auto& hooks = tweak_.manifest._hooks;
    for (std::size_t i = 0; i < hooks.size(); ++i) {
      if (!hooks[i]) continue;
      const std::string place = "hooks[" + std::to_string(i) + "]";
      checkIdentity(*hooks[i], place);
      checkSignature(*hooks[i], place);
      for (const auto& [index, box] : hooks[i]->_args) {
        checkResources(box, place + ".args." + std::to_string(index));
      }
    }
    return std::move(warnings_);
  }

 private:
  void warn(const std::string& place, const std::string& text) {
    warnings_.push_back(tweak_.pathOf("Manifest.json") + ": " + place + ": " + text);
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

  void checkSignature(const Hook& hook, const std::string& place) {
    if (const auto problem = signatureProblem(hook)) warn(place + ".signature", *problem);
    const auto types = methodTypes(hook);
    if (!types) return;
    const std::size_t known = std::max(argumentCount(*types), colonsOf(hook));
    for (const auto& [index, box] : hook._args) {
      const bool isKnown = index >= Hook::kReturnValue && index < static_cast<std::int64_t>(known);
      if (!isKnown)
        warn(place + ".args." + std::to_string(index), "the method has no such argument");
    }
    if ((types->result == "v" || types->result == "Vv") &&
        hook._args.contains(Hook::kReturnValue)) {
      warn(place + ".args.-1", "the method returns nothing");
    }
  }

  void checkResources(const ParameterContainer& box, const std::string& place) {
    if (const auto* data = std::get_if<DataParameter>(&box.value)) {
      checkResource(data->filename, place);
    } else if (const auto* image = std::get_if<ImageParameter>(&box.value)) {
      checkResource(image->filename, place);
    } else if (const auto* array = std::get_if<ArrayParameter>(&box.value)) {
      for (std::size_t i = 0; i < array->_items.size(); ++i) {
        checkResources(array->_items[i], place + ".items[" + std::to_string(i) + "]");
      }
    } else if (const auto* dictionary = std::get_if<DictionaryParameter>(&box.value)) {
      for (std::size_t i = 0; i < dictionary->_items.size(); ++i) {
        const std::string pair = place + ".items[" + std::to_string(i) + "]";
        checkResources(dictionary->_items[i]._key, pair + ".key");
        checkResources(dictionary->_items[i]._value, pair + ".value");
      }
    }
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
  std::vector<std::string> warnings_;
};

}  // namespace

std::optional<std::string> signatureProblem(const Hook& hook) {
  const std::string signature = "\"" + hook.signature + "\"";
  const auto types = methodTypes(hook);
  if (!types) return signature + " is not a method's type encoding";
  const std::size_t count = argumentCount(*types);
  const std::size_t colons = colonsOf(hook);
  if (count == colons) return std::nullopt;
  return signature + " has " + std::to_string(count) + (count == 1 ? " argument" : " arguments") +
         ", the selector \"" + hook.selector + "\" takes " + std::to_string(colons);
}

std::vector<std::string> warningsFor(const OpenedTweak& tweak) { return Checker(tweak).run(); }

}  // namespace tavlen::cli
