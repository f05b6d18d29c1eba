#include "cli/work/TweakCheck.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

#include "cli/work/AttachedFiles.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceFiles.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

Diagnostic diagnosticOf(const OpenedTweak& tweak, const TweakProblem& problem) {
  Diagnostic diagnostic = {.severity = Diagnostic::kWarning,
                           .message = problem.text,
                           .file = tweak.pathOf("Manifest.json"),
                           .code = std::string(problem.code)};
  if (problem.subject == TweakProblem::Subject::file) {
    diagnostic.file = tweak.pathOf(problem.file);
  } else {
    diagnostic.place = documentPath(tweak.manifest, problem);
  }
  return diagnostic;
}

}  // namespace

TweakSurroundings surroundingsOf(fs::path folder) {
  TweakSurroundings surroundings;
  surroundings.apps = AppList::shared().identifiers();
  const fs::path top = TweakFile::resourcesFolder;
  const auto files = attachedFiles(folder, top.string(), [&](const std::string& entry) {
    surroundings.strayEntries.push_back(entry);
  });
  std::sort(surroundings.strayEntries.begin(), surroundings.strayEntries.end());
  for (const std::string& file : files) {
    // Hidden files, such as those that keep a folder under version control, are not for the app.
    if (!fs::path(file).filename().string().starts_with('.'))
      surroundings.resources.push_back(fs::path(file).lexically_relative(top).string());
  }
  surroundings.stateOf = [resources = folder / top](const std::string& name) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, resources, name);
    if (!file) return TweakSurroundings::ResourceState::outside;
    return fs::is_regular_file(root.status(*file)) ? TweakSurroundings::ResourceState::present
                                                   : TweakSurroundings::ResourceState::missing;
  };
  return surroundings;
}

std::vector<Diagnostic> warningsFor(const OpenedTweak& tweak) {
  TweakSurroundings surroundings = surroundingsOf(tweak.file->url());
  surroundings.script = tweak.script;
  std::vector<Diagnostic> warnings;
  for (const TweakProblem& problem : problemsOf(tweak.manifest, surroundings))
    warnings.push_back(diagnosticOf(tweak, problem));
  return warnings;
}

}  // namespace tavlen::cli
