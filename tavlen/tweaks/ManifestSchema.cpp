#include "tavlen/tweaks/ManifestSchema.h"

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/json/JSONSchema.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

template <>
inline constexpr std::string_view kSchemaName<TweakFile::Manifest::Configuration> = "configuration";
template <>
inline constexpr std::string_view kSchemaName<OverrideContainer> = "override";
template <>
inline constexpr std::string_view kSchemaName<Hook> = "hook";
template <>
inline constexpr std::string_view kSchemaName<ParameterContainer> = "parameter";

std::string manifestSchema() {
  std::string text;
  JSONEncoder encoder(text);
  JSONSchemaWriter(encoder).document<TweakFile::Manifest>(
      "Manifest.json",
      "A tweak. Keys that are not listed here are ignored, and are lost when the document is next "
      "edited by a program.");
  encoder.finish();
  return text;
}

}  // namespace tavlen
