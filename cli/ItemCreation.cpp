#include "cli/ItemCreation.h"

#include <CLI/CLI.hpp>
#include <utility>
#include <vector>

#include "cli/AppArgument.h"
#include "cli/ArgumentChecks.h"
#include "cli/Console.h"
#include "cli/StoredItem.h"
#include "tavlen/tweaks/GlyphNames.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string name;
  std::string app;
  TweakColor color = TweakColor::lightGreen;
  TweakGlyph glyph = TweakGlyph::default_();
};

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

void addLook(CLI::App& command, Options& options) {
  const auto& colors = RawValues<TweakColor>::names;
  command
      .add_option_function<std::string>(
          "--color",
          [&options](const std::string& name) { options.color = *fromRawValue<TweakColor>(name); },
          "The colour that it is shown in")
      ->check(CLI::IsMember(std::vector<std::string>(colors.begin(), colors.end())))
      ->type_name("COLOR");
  command
      .add_option_function<std::string>(
          "--glyph", [&options](const std::string& text) { options.glyph = glyphNamed(text); },
          "The icon that it is shown with, by the names of Font Awesome 5.15.4 Free")
      ->type_name("ICON[/STYLE]");
}

int create(const Options& options, const ItemFactory& make) {
  const std::string bundleID = bundleIDOf(options.app);
  const std::shared_ptr<TweakProtocol> item =
      make(options.name, options.color, options.glyph, bundleID);
  announce(*item, GenericTweakDiffMode::create);
  if (!isInstalledApp(bundleID)) printWarning(bundleID + ": no app of that identifier is here");
  printData(item->id() + "\n");
  return 0;
}

}  // namespace

void addItemCreation(CLI::App& group, Action& action, const std::string& kind, ItemFactory make) {
  auto* command =
      group.add_subcommand("new", "Make a new, empty " + kind + " and print its identifier");
  const auto options = std::make_shared<Options>();
  command->add_option("NAME", options->name, "The " + kind + "'s name")
      ->required()
      ->check(notEmpty() & validUTF8());
  command->add_option("--app", options->app, kAppHelp)
      ->required()
      ->check(notEmpty() & validUTF8())
      ->type_name("APP");
  addLook(*command, *options);
  command->callback([options, make = std::move(make), &action] {
    action = [options, make] { return create(*options, make); };
  });
}

}  // namespace tavlen::cli
