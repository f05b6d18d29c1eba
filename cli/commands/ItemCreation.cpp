#include "cli/commands/ItemCreation.h"

#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/UsageError.h"
#include "cli/terminal/Console.h"
#include "cli/work/StoreLock.h"
#include "tavlen/items/GlyphNames.h"

namespace tavlen::cli {

namespace {

struct Options {
  std::string name;
  std::string app;
  TweakColor color = TweakColor::lightGreen;
  TweakGlyph glyph = TweakGlyph::default_();
};

/// Reads ICON[/STYLE]; the glyph must be known.
TweakGlyph glyphNamed(const std::string& text) {
  TweakGlyph glyph = glyphFromText(text);
  if (isKnownGlyph(glyph)) return glyph;
  const auto suggestion = suggestedGlyph(glyph);
  throw UsageError("--glyph",
                   "unknown glyph \"" + glyphText(glyph) + "\"" +
                       (suggestion ? "; did you mean " + glyphText(*suggestion) + "?" : ""));
}

void addLook(Command command, Options& options) {
  const auto& colors = RawValues<TweakColor>::names;
  command
      .text(
          "--color",
          [&options](const std::string& name) { options.color = *fromRawValue<TweakColor>(name); },
          "The colour in which it is shown")
      .oneOf({colors.begin(), colors.end()})
      .typeName("COLOR");
  command
      .text(
          "--glyph", [&options](const std::string& text) { options.glyph = glyphNamed(text); },
          "The icon with which it is shown, by its name in Font Awesome 5.15.4 Free")
      .typeName("ICON[/STYLE]");
}

int create(const Options& options, const ItemFactory& make) {
  const std::string bundleID = bundleIDOf(options.app);
  const StoreLock lock = StoreLock::ofStore();
  const std::shared_ptr<TweakProtocol> item =
      make(options.name, options.color, options.glyph, bundleID);
  announce(*item, GenericTweakDiffMode::create);
  if (!isInstalledApp(bundleID))
    printWarning(bundleID + ": no app with that identifier is installed");
  printData(item->id() + "\n");
  return 0;
}

}  // namespace

void addItemCreation(Command group, const std::string& kind, ItemFactory make) {
  Command command =
      group.addCommand("new", "Create an empty " + kind + " and print its identifier");
  const auto options = std::make_shared<Options>();
  command.text("NAME", options->name, "The " + kind + "'s name").required().notEmpty().utf8();
  command.text("--app", options->app, kAppHelp).required().notEmpty().utf8().typeName("APP");
  addLook(command, *options);
  command.run([options, make = std::move(make)] { return create(*options, make); });
}

}  // namespace tavlen::cli
