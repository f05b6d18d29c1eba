#include "cli/commands/CompletionCandidates.h"

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "cli/arguments/ImageArgument.h"
#include "cli/arguments/RootOption.h"
#include "cli/arguments/StoredItem.h"
#include "cli/classes/ClassDump.h"
#include "cli/classes/MethodSearch.h"
#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

namespace {

using Candidates = std::set<std::string>;

std::string given(const CompletedWord& word, std::string_view name) {
  const auto found = word.given.find(name);
  return found == word.given.end() ? std::string() : found->second;
}

/// Stored items of that kind, or of both; by their identifiers if the user has begun one.
void addItems(Candidates& candidates, std::string_view kind, std::string_view prefix) {
  for (const auto& [item, configuration] : TweakManager::listedTweaks()) {
    if (!kind.empty() && kindOf(*item) != kind) continue;
    candidates.insert(configuration.name());
    if (!prefix.empty()) candidates.insert(item->id());
  }
}

void addApps(Candidates& candidates) {
  const DeviceRoot root = DeviceRoot::shared();
  for (const AppListApp& app : root.isDevice() ? LSAppListFetcher().fetchAllApps()
                                               : DirectoryAppListFetcher(root).fetchAllApps())
    candidates.insert(app.bundleID);
}

std::vector<Hook> hooksOf(const std::string& tweak) {
  return tweak.empty() ? std::vector<Hook>() : openedTweak(tweak).manifest.hooks();
}

void addHooks(Candidates& candidates, const std::string& tweak) {
  for (const Hook& hook : hooksOf(tweak)) {
    candidates.insert(methodText(hook.identity()));
    if (hook.customName) candidates.insert(*hook.customName);
  }
}

/// The images that the line names, or those of the tweak's app.
std::optional<ClassDump> classesFor(const CompletedWord& word) {
  ImageArgument argument;
  argument.image = given(word, "--in");
  argument.source = ClassSource::file;
  if (argument.image.empty() && !given(word, "TWEAK").empty())
    argument.image = openedTweak(given(word, "TWEAK")).manifest.configuration.bundleID;
  // Archives would have to be unpacked, and the standard input is the shell's.
  if (argument.image.empty() || argument.isStream() || argument.image.ends_with(".ipa"))
    return std::nullopt;
  return dumpClasses(argument);
}

void addClasses(Candidates& candidates, const CompletedWord& word) {
  const std::optional<ClassDump> dump = classesFor(word);
  if (!dump) return;
  for (const ImageDump& image : dump->images) {
    for (const auto& each : image.classes) candidates.insert(std::string(each->name.str()));
  }
}

/// The methods of the class that the user has begun, or "-[Class " for each class that it may be.
void addMethods(Candidates& candidates, const CompletedWord& word) {
  const bool isClassMethod = word.prefix.starts_with('+');
  const std::optional<ClassDump> dump = classesFor(word);
  if (!dump) return;
  std::map<std::string, Candidates> methods;  // by the beginnings
  for (const ImageDump& image : dump->images) {
    for (const auto& cls : image.classes) {
      const std::string start = (isClassMethod ? "+[" : "-[") + std::string(cls->name.str()) + " ";
      if (!start.starts_with(word.prefix) && !word.prefix.starts_with(start)) continue;
      for (const auto& method : cls->methods) {
        if (method->isClassMethod == isClassMethod)
          methods[start].insert(start + std::string(method->selector.str()) + "]");
      }
    }
  }
  for (const auto& [start, whole] : methods) {
    // A shell takes a single candidate for complete, and closes its quote.
    if (methods.size() == 1) {
      candidates.insert(whole.begin(), whole.end());
    } else {
      candidates.insert(start);
    }
  }
}

/// Icons, and once one is written with its slash, its styles, too.
void addGlyphs(Candidates& candidates, std::string_view prefix) {
  const bool hasStyle = prefix.find('/') != prefix.npos;
  for (const TweakGlyph& glyph : knownGlyphs())
    candidates.insert(hasStyle ? glyphText(glyph) : glyph.icon);
}

}  // namespace

bool isComparedKind(std::string_view kind) { return kind == "BEFORE" || kind == "AFTER"; }

std::set<std::string> completionCandidates(const CompletedWord& word) {
  useRoot({given(word, "--root"), given(word, "--prefix")});
  Candidates candidates;
  for (const std::string& kind : word.kinds) {
    if (kind == "ITEM") addItems(candidates, "", word.prefix);
    if (kind == "TWEAK" || isComparedKind(kind)) addItems(candidates, "tweak", word.prefix);
    if (kind == "COLLECTION") addItems(candidates, "collection", word.prefix);
    if (kind == "APP") addApps(candidates);
    if (kind == "HOOK") addHooks(candidates, given(word, "TWEAK"));
    if (kind == "CLASS") addClasses(candidates, word);
    if (kind == "METHOD") addMethods(candidates, word);
    if (kind == "GLYPH") addGlyphs(candidates, word.prefix);
    if (kind == "KIND") {
      for (const std::string_view name : OverrideContainer::supportedTypes())
        candidates.emplace(name);
    }
  }
  return candidates;
}

}  // namespace tavlen::cli
