#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/HookSource.h"

namespace tavlen {

/// The text that a tweak is converted from, and where its parts came from. A value; threads: any.
class TAVLEN_API TweakSource {
 public:
  /// A part of the text that was generated for a hook.
  struct HookPlace {
    std::size_t hook;  ///< the hook's index in the list

    bool operator==(const HookPlace&) const = default;
  };
  /// What a place in the text came from: a hook, or a place in the script.
  using Place = std::variant<HookPlace, TextPosition>;

  /// The text for `hooks` and `script`; see TweakProcessor::assembled(). Throws EncodingError as
  /// generateHookSource() does.
  TweakSource(std::span<const Hook> hooks, std::string_view script);

  /// The whole text.
  const std::string& text() const { return text_; }
  /// The part of the text that was generated, without the line feeds after it.
  std::string_view generatedText() const { return std::string_view(text_).substr(0, generated_); }
  /// The hooks in the order of the text.
  std::span<const HookSource::Entry> entries() const { return entries_; }
  /// The number of lines before the first one of the script.
  std::size_t linesBeforeScript() const { return linesBeforeScript_; }

  /// The last hook that begins at or before the byte `offset`, if any.
  const HookSource::Entry* entryBefore(std::size_t offset) const;

  /// What `position` came from. Returns nothing for a place outside of the text, and for the lines
  /// around the hooks of a class.
  std::optional<Place> placeAt(TextPosition position) const;

 private:
  std::string text_;
  std::size_t generated_;
  std::vector<HookSource::Entry> entries_;
  std::size_t linesBeforeScript_;
};

}  // namespace tavlen
