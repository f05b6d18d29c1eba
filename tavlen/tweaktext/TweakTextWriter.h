#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// The files that the text of a tweak names.
struct TAVLEN_API TweakTextFiles {
  std::optional<std::string> icon;    ///< the path of the tweak's own icon
  std::optional<std::string> script;  ///< the path of the tweak's script
};

/// Writes a tweak as the text of a tweak.toml (TweakText.h), with the declaration of each method as
/// a comment. The text depends on nothing else, and readTweakText() returns an equal manifest, to
/// the bit, without null hooks.
///
/// Errors: EncodingError for text that is not UTF-8, and for a manifest whose text would be longer
/// than limits::kDocumentBytes. Threads: any.
TAVLEN_API std::string writeTweakText(const TweakFile::Manifest& manifest,
                                      const TweakTextFiles& files);

/// A hook's value at `index`, an argument or Hook::kReturnValue, on one line as in a text. Errors:
/// EncodingError, as writeTweakText().
TAVLEN_API std::string valueText(const Hook& hook, std::int64_t index);

/// A glyph on one line as in a text, with the style or without. Those of two glyphs differ. Errors:
/// as valueText().
TAVLEN_API std::string valueText(const TweakGlyph& glyph);

/// The value of an override on one line as in a text; empty if it has none. Errors: as valueText().
TAVLEN_API std::string valueText(const OverrideContainer& override_);

}  // namespace tavlen
