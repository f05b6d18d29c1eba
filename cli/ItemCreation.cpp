#include "cli/LookOptions.h"

#include <CLI/CLI.hpp>
#include <string>

#include "tavlen/tweaks/GlyphNames.h"

namespace tavlen::cli {

namespace {

std::string described(const TweakGlyph& glyph) { return glyph.icon + "/" + glyph.style; }

/// Where the user names no style, the plain one is meant, or the only one that there is.
TweakGlyph glyphNamed(const std::string& text) {
  const std::size_t slash = text.find('/');
  const bool hasStyle = slash != std::string::npos;
  TweakGlyph glyph{text.substr(0, slash), hasStyle ? text.substr(slash + 1) : "solid"};
  if (isKnownGlyph(glyph)) return glyph;
  const auto suggestion = suggestedGlyph(glyph);
  if (suggestion && !hasStyle && suggestion->icon == glyph.icon) return *suggestion;
  throw CLI::ValidationError(
      "--glyph", "unknown glyph \"" + described(glyph) + "\"" +
                     (suggestion ? "; did you mean " + described(*suggestion) + "?" : ""));
}

}  // namespace

void addLookOptions(CLI::App& command, Look& look) {
  const auto& colors = RawValues<TweakColor>::names;
  command
      .add_option_function<std::string>(
          "--color",
          [&look](const std::string& name) { look.color = *fromRawValue<TweakColor>(name); },
          "The colour that it is shown in")
      ->check(CLI::IsMember(std::vector<std::string>(colors.begin(), colors.end())))
      ->type_name("COLOR");
  command
      .add_option_function<std::string>(
          "--glyph", [&look](const std::string& text) { look.glyph = glyphNamed(text); },
          "The icon that it is shown with, by the names of Font Awesome 5.15.4 Free")
      ->type_name("ICON[/STYLE]");
}

}  // namespace tavlen::cli
