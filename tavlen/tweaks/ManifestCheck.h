#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/HookCheck.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/PackagedEntries.h"

namespace tavlen {

/// A likely mistake in a tweak, with which it still builds.
struct TAVLEN_API TweakProblem {
  /// What it is about.
  enum class Subject { app, glyph, override_, hook, file };

  /// What it is about.
  Subject subject = Subject::file;
  /// Of the override or of the hook, in the manifest's lists.
  std::size_t index = 0;
  /// The place in the hook.
  HookPlace place = {};
  /// The path of the file in the tweak's folder.
  std::string file = {};
  /// The name of the rule, for programs: "unknown-glyph". A constant.
  std::string_view code;
  /// The fault, to be shown after its place.
  std::string text;
};

/// What a manifest is checked against.
struct TAVLEN_API TweakSurroundings {
  /// What a name of a resource leads to.
  enum class ResourceState { present, missing, outside };

  /// Where the name of a resource leads. Never empty.
  std::function<ResourceState(const std::string& name)> stateOf;
  /// How messages call the hook at that index; as "hooks[2]" if this is empty.
  std::function<std::string(std::size_t hook)> nameOfHook = {};
  /// The files in the tweak's resources, relative to that folder, to find unused ones.
  std::vector<std::string> resources = {};
  /// The refusedEntries() of the tweak's folder.
  std::vector<RefusedEntry> refusedEntries = {};
  /// The tweak's script.
  std::string_view script = {};
  /// The identifiers of the installed apps. The app is not checked if there are none: then this is
  /// no device.
  std::vector<std::string> apps = {};
};

/// The problems of a tweak, in the order of its manifest: an app that is not installed, an unknown
/// glyph; overrides that are empty, malformed or repeated; the problemsOf() its hooks, methods
/// hooked twice, resources that are missing or lie outside of their folder; and last entries
/// that are not packaged, and the resources that nothing uses. Time is linear in the manifest but
/// for usesOf() and the number of apps. Threads: any.
TAVLEN_API std::vector<TweakProblem> problemsOf(const TweakFile::Manifest& manifest,
                                                const TweakSurroundings& surroundings);

/// The place of a problem in the stored manifest: "hooks[2].args.0", "configuration.glyph"; empty
/// for a file.
TAVLEN_API std::string documentPath(const TweakFile::Manifest& manifest,
                                    const TweakProblem& problem);

}  // namespace tavlen
