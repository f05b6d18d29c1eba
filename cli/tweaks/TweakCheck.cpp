#include "cli/tweaks/TweakCheck.h"

#include <filesystem>
#include <string>
#include <utility>

#include "cli/tweaks/AttachedFiles.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/TweakResources.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceFiles.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

Diagnostic diagnosticOf(const TextInput& input, const TweakProblem& problem) {
  const auto position = input.text.placeOf(problem);
  Diagnostic diagnostic = position ? input.at(*position) : Diagnostic();
  if (!position) diagnostic.file = input.pathOf(problem.file);
  diagnostic.severity = Diagnostic::kWarning;
  diagnostic.message = problem.text;
  diagnostic.code = std::string(problem.code);
  return diagnostic;
}

Diagnostic diagnosticOf(const OpenedTweak& tweak, const TweakProblem& problem) {
  if (tweak.text) return diagnosticOf(*tweak.text, problem);
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

void printIgnoredKeys(const OpenedTweak& tweak) {
  const std::string file = tweak.pathOf("Manifest.json");
  for (const IgnoredKey& key : tweak.ignoredKeys.keys) {
    print({.severity = Diagnostic::kWarning,
           .message = key.text,
           .file = file,
           .line = key.position.line,
           .column = key.position.column,
           .place = key.path,
           .code = std::string(key.code)});
  }
  if (tweak.ignoredKeys.others == 0) return;
  print({.severity = Diagnostic::kWarning,
         .message = std::to_string(tweak.ignoredKeys.others) +
                    (tweak.ignoredKeys.others == 1 ? " more key is" : " more keys are") +
                    " unknown or repeated",
         .file = file,
         .code = "unknown-key"});
}

OpenedTweak openedFrom(const TweakFile::Opened& opened, const std::string& folder) {
  OpenedTweak tweak;
  tweak.argument = folder;
  tweak.folder = folder;
  tweak.file = opened.file;
  tweak.manifest = opened.manifest;
  tweak.ignoredKeys = opened.ignoredKeys;
  tweak.script = opened.file->script();
  return tweak;
}

void printWarnings(const OpenedTweak& tweak, TweakSurroundings surroundings) {
  printIgnoredKeys(tweak);
  surroundings.script = tweak.script;
  for (const Diagnostic& warning : warningsFrom(problemsOf(tweak.manifest, surroundings), tweak))
    print(warning);
}

/// The file of the resource `name` relative to the tweak's folder.
std::string resourceFile(const std::string& name) {
  return (fs::path(TweakFile::resourcesFolder) / name).lexically_normal().string();
}

/// Adds the resources among `files`, paths in the tweak's folder.
void addResources(TweakSurroundings& surroundings, const std::set<std::string>& files) {
  for (const fs::path file : files) {
    if (*file.begin() == TweakFile::resourcesFolder && !isHiddenFile(file))
      surroundings.resources.push_back(
          file.lexically_relative(TweakFile::resourcesFolder).string());
  }
}

}  // namespace

TweakSurroundings surroundingsOf(const fs::path& folder) {
  TweakSurroundings surroundings;
  surroundings.apps = AppList::shared().identifiers();
  surroundings.refusedEntries = refusedEntries(DeviceRoot::shared().follow(folder));
  const fs::path top = TweakFile::resourcesFolder;
  addResources(surroundings, attachedFiles(folder, top.string(), [](const auto&, auto) {}));
  surroundings.stateOf = [resources = folder / top](const std::string& name) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, resources, name);
    if (!file) return TweakSurroundings::ResourceState::outside;
    return fs::is_regular_file(root.status(*file)) ? TweakSurroundings::ResourceState::present
                                                   : TweakSurroundings::ResourceState::missing;
  };
  return surroundings;
}

std::vector<Diagnostic> warningsFor(const TextInput& input, const fs::path& target) {
  using State = TweakSurroundings::ResourceState;
  const DeviceRoot root = DeviceRoot::shared();
  TweakSurroundings surroundings;
  surroundings.apps = AppList::shared().identifiers();
  addResources(surroundings, input.files);
  if (input.script) surroundings.script = *input.script;
  surroundings.stateOf = [&](const std::string& name) {
    if (!pathInside(root, input.folder / TweakFile::resourcesFolder, name)) return State::outside;
    const std::string file = resourceFile(name);
    const bool isKept = !target.empty() &&
                        !input.wholeFolders.contains(TweakFile::resourcesFolder) &&
                        fs::is_regular_file(root.status(target / file));
    return isKept || input.files.contains(file) ? State::present : State::missing;
  };
  surroundings.nameOfHook = [&](std::size_t hook) {
    return "the hook at " + description(input.text.hooks.at(hook).method);
  };
  std::vector<Diagnostic> warnings;
  for (const TweakProblem& problem : problemsOf(input.text.manifest, surroundings))
    warnings.push_back(diagnosticOf(input, problem));
  return warnings;
}

std::vector<Diagnostic> warningsFrom(const std::vector<TweakProblem>& problems,
                                     const OpenedTweak& tweak) {
  std::vector<Diagnostic> warnings;
  warnings.reserve(problems.size());
  for (const TweakProblem& problem : problems) warnings.push_back(diagnosticOf(tweak, problem));
  return warnings;
}

void printWarnings(const OpenedTweak& tweak) {
  if (tweak.text) {
    for (const Diagnostic& warning : warningsFor(*tweak.text, {})) print(warning);
    return;
  }
  printWarnings(tweak, surroundingsOf(tweak.file->url()));
}

void printWarnings(const TweakFile::Opened& opened, const std::string& folder) {
  printWarnings(openedFrom(opened, folder));
}

void printWarningsOfInstallation(const TweakFile::Opened& opened, bool copiesExecutables) {
  const fs::path folder = opened.file->url();
  TweakSurroundings surroundings = surroundingsOf(folder);
  std::erase_if(surroundings.refusedEntries, [&](const RefusedEntry& entry) {
    const fs::path top = *entry.path.begin();
    const bool isCopied = top == TweakFile::resourcesFolder || top == TweakFile::iconFile ||
                          (copiesExecutables && top == TweakFile::executablesFolder);
    return entry.isPackaged || !isCopied;
  });
  printWarnings(openedFrom(opened, folder.string()), std::move(surroundings));
}

}  // namespace tavlen::cli
