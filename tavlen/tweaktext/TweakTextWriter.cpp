#include "tavlen/tweaktext/TweakTextWriter.h"

#include <algorithm>
#include <set>
#include <utility>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/toml/TOMLWriter.h"
#include "tavlen/introspection/classes/ObjCMethod.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/tweaktext/detail/OverrideText.h"
#include "tavlen/tweaktext/detail/ValueText.h"

namespace tavlen {

namespace {

/// Dotted keys in a text; with more, readTOML() would refuse it (detail/TOMLPrescan.h).
constexpr std::size_t kMostDottedKeys = 20'000;
/// Bytes of a declaration; those of large structures would fill the text.
constexpr std::size_t kLongestDeclaration = 200;

TOMLNode text(std::string value) { return {std::move(value), {}}; }

/// "moon" or "moon/regular" where it reads back to the glyph, or else a table.
TOMLNode nodeFromGlyph(const TweakGlyph& glyph) {
  for (const std::string& name : {glyph.icon, glyphText(glyph)}) {
    if (glyphFromText(name) == glyph) return text(name);
  }
  return {TOMLNode::Table{{"icon", text(glyph.icon), {}}, {"style", text(glyph.style), {}}}, {}};
}

/// The method's declaration in C on one line, or an empty text if it is too long to read.
std::string declarationOf(const Hook& hook) {
  // Types are seldom much shorter as encodings.
  if (hook.signature.size() > 2 * kLongestDeclaration) return "";
  std::string declaration = hook.method()->plainDeclaration();
  return declaration.size() <= kLongestDeclaration ? declaration : "";
}

class Writer {
 public:
  Writer(std::string& out, TOMLWriter::DottedKeys dottedKeys) : out_(out), toml_(out, dottedKeys) {}

  void write(const TweakFile::Manifest& manifest, const TweakTextFiles& files) {
    writeTweak(manifest.configuration, files);
    writeOverrides(manifest._overrides);
    for (const BoxedOptional<Hook>& hook : manifest._hooks) {
      if (!hook) continue;
      writeHook(*hook);
      requireShort();
    }
  }

  std::size_t dottedKeyCount() const { return toml_.dottedKeyCount(); }

 private:
  void writeTweak(const TweakFile::Manifest::Configuration& configuration,
                  const TweakTextFiles& files) {
    toml_.table("tweak");
    toml_.member("name", text(configuration.name));
    toml_.member("app", text(configuration.bundleID));
    toml_.member("color", text(std::string(rawValue(configuration.color))));
    if (configuration._glyph) toml_.member("glyph", nodeFromGlyph(*configuration._glyph));
    if (files.icon) toml_.member("icon", text(*files.icon));
    if (files.script) toml_.member("script", text(*files.script));
  }

  void writeOverrides(const std::vector<OverrideContainer>& overrides) {
    std::set<std::string_view> kinds;
    const bool isTable = std::all_of(overrides.begin(), overrides.end(), [&](const auto& each) {
      return nodeFromOverride(each) && kinds.insert(each.identifier()).second;
    });
    if (isTable && !overrides.empty()) toml_.table("overrides");
    for (const OverrideContainer& each : overrides) {
      const auto value = nodeFromOverride(each);
      if (isTable) {
        toml_.member(each.identifier(), *value);
        continue;
      }
      toml_.arrayElement("override");
      toml_.member("kind", text(std::string(each.identifier())));
      if (value) toml_.member("value", *value);
    }
    requireShort();
  }

  void writeHook(const Hook& hook) {
    toml_.arrayElement("hook");
    writeIdentity(hook);
    toml_.member("types", text(hook.signature));
    if (hook.customName) toml_.member("name", text(*hook.customName));
    const auto types = HookTypes::from(hook.signature);
    TOMLNode::Table args;
    for (const auto& [index, box] : hook._args) {
      TOMLNode value = nodeFromParameter(box.value, types ? types->at(index) : ArgumentType());
      if (index == Hook::kReturnValue) {
        toml_.member("return", value);
      } else {
        args.push_back({std::to_string(index), std::move(value), {}});
      }
    }
    if (!args.empty()) toml_.spreadMember("args", {std::move(args), {}});
  }

  void writeIdentity(const Hook& hook) {
    const std::string declaration = declarationOf(hook);
    if (!declaration.empty()) toml_.comment(declaration);
    const MethodIdentity identity = hook.identity();
    if (methodNamed(methodText(identity)) == identity) {
      toml_.member("method", text(methodText(identity)));
      return;
    }
    toml_.member("class", text(hook.className));
    toml_.member("selector", text(hook.selector));
    if (hook.isClassMethod) toml_.member("classMethod", {true, {}});
  }

  void requireShort() const {
    if (out_.size() > limits::kDocumentBytes) {
      throw EncodingError::invalidValue("more than " + std::to_string(limits::kDocumentBytes) +
                                        " bytes");
    }
  }

  std::string& out_;
  TOMLWriter toml_;
};

}  // namespace

std::string valueText(const Hook& hook, std::int64_t index) {
  const auto types = HookTypes::from(hook.signature);
  return lineFromTOML(
      nodeFromParameter(hook._args.at(index).value, types ? types->at(index) : ArgumentType()));
}

std::string valueText(const TweakGlyph& glyph) { return lineFromTOML(nodeFromGlyph(glyph)); }

std::string valueText(const OverrideContainer& override_) {
  const auto node = nodeFromOverride(override_);
  return node ? lineFromTOML(*node) : "";
}

std::string writeTweakText(const TweakFile::Manifest& manifest, const TweakTextFiles& files) {
  using DottedKeys = TOMLWriter::DottedKeys;
  std::string out;
  Writer writer(out, DottedKeys::allowed);
  writer.write(manifest, files);
  if (writer.dottedKeyCount() <= kMostDottedKeys) return out;
  out.clear();
  Writer(out, DottedKeys::avoided).write(manifest, files);
  return out;
}

}  // namespace tavlen
