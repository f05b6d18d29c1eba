#include "cli/arguments/LookOptions.h"

#include <string>

#include "cli/arguments/UsageError.h"
#include "tavlen/items/GlyphNames.h"

namespace tavlen::cli {

namespace {

/// Reads "moon" or "moon/regular"; the glyph must be known.
TweakGlyph glyphNamed(const std::string& text) {
  TweakGlyph glyph = glyphFromText(text);
  if (isKnownGlyph(glyph)) return glyph;
  const auto suggestion = suggestedGlyph(glyph);
  throw UsageError("--glyph",
                   "unknown glyph \"" + glyphText(glyph) + "\"" +
                       (suggestion ? "; did you mean \"" + glyphText(*suggestion) + "\"?" : ""));
}

}  // namespace

void addLookOptions(Command command, Look& look) {
  const auto& colors = RawValues<TweakColor>::names;
  command
      .text(
          "--color",
          [&look](const std::string& name) { look.color = fromRawValue<TweakColor>(name); },
          "The colour in which it is shown")
      .oneOf({colors.begin(), colors.end()})
      .typeName("COLOR");
  command
      .text(
          "--glyph", [&look](const std::string& text) { look.glyph = glyphNamed(text); },
          "The icon with which it is shown: its name in Font Awesome 5.15.4 Free, and perhaps a "
          "style, as in moon/regular")
      .typeName("GLYPH");
}

}  // namespace tavlen::cli
