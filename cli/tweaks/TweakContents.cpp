#include "cli/tweaks/TweakContents.h"

#include <memory>
#include <stdexcept>
#include <utility>

#include "cli/tweaks/AttachedFiles.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/tweaktext/TweakTextWriter.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// The files of `one` that `other` lacks although it knows the whole folder.
std::vector<std::string> filesMissingIn(const TweakContents& other, const TweakContents& one) {
  std::vector<std::string> missing;
  for (const auto& entry : one.files) {
    const std::string top = fs::path(entry.first).begin()->string();
    if (other.wholeFolders.contains(top) && !other.files.contains(entry.first))
      missing.push_back(entry.first);
  }
  return missing;
}

template <class Part>
void addPart(std::vector<TweakChange>& changes, const char* subject,
             const std::optional<Part>& before, const std::optional<Part>& after) {
  if (before == after) return;
  changes.push_back({!before  ? TweakChange::kAdded
                     : !after ? TweakChange::kRemoved
                              : TweakChange::kChanged,
                     subject});
}

}  // namespace

TweakContents contentsOf(const TweakFile::Opened& tweak) {
  TweakContents contents{
      tweak.manifest, tweak.file->customIcon(), tweak.file->readScript(), {}, {}, {}};
  const fs::path folder = tweak.file->url();
  for (const std::string& name : attachedFiles(folder, folder.string()))
    contents.files.emplace(name, folder);
  contents.wholeFolders.insert(kAttachedFolders.begin(), kAttachedFolders.end());
  return contents;
}

TweakContents contentsOf(const TextInput& input) {
  TweakContents contents{input.text.manifest, input.icon, input.script, {}, input.wholeFolders, {}};
  for (const std::string& name : input.files) contents.files.emplace(name, input.folder);
  return contents;
}

TweakContents contentsOf(const OpenedTweak& tweak) {
  TweakContents contents = tweak.text ? contentsOf(*tweak.text) : contentsOf(tweak.opened());
  contents.owner = tweak.temporaryFolder;
  return contents;
}

std::string textOf(const TweakContents& contents) {
  TweakTextFiles files;
  if (contents.icon) files.icon = TweakFile::iconFile;
  if (contents.script) files.script = TweakFile::scriptFile;
  return writeTweakText(contents.manifest, files);
}

std::vector<TweakChange> changesBetween(const TweakContents& before, const TweakContents& after) {
  std::vector<TweakChange> changes = changesBetween(before.manifest, after.manifest);
  addPart(changes, "icon", before.icon, after.icon);
  addPart(changes, "script", before.script, after.script);
  for (const std::string& name : filesMissingIn(after, before))
    changes.push_back({TweakChange::kRemoved, "file", name});
  for (const std::string& name : filesMissingIn(before, after))
    changes.push_back({TweakChange::kAdded, "file", name});
  for (const auto& [name, folder] : after.files) {
    const auto old = before.files.find(name);
    if (old != before.files.end() && !isSameFile(old->second, folder, name))
      changes.push_back({TweakChange::kChanged, "file", name});
  }
  return changes;
}

void writeContents(const fs::path& draft, const TweakContents& before, const TweakContents& after) {
  const std::shared_ptr<TweakFile> tweak = TweakFile::handle(draft);
  tweakPoster().performWithoutNotifications([&] {
    tweak->setManifest(after.manifest);
    if (before.icon != after.icon) tweak->writeCustomIcon(after.icon);
  });
  if (after.script) {
    if (before.script != after.script) tweak->writeScript(*after.script);
  } else {
    removeItem(draft / TweakFile::scriptFile);
  }
  for (const std::string& name : filesMissingIn(after, before)) removeItem(draft / name);
  for (const auto& [name, folder] : after.files) copyAttachedFile(folder, draft, name);
}

void makeTweakFolder(const fs::path& draft, const TweakContents& contents) {
  for (const char* name : kAttachedFolders) fs::create_directories(draft / name);
  writeContents(draft, {}, contents);
}

void replaceContents(TweakFile& tweak, const TweakContents& before, const TweakContents& after) {
  const fs::path place = canonical(DeviceRoot::shared(), tweak.url());
  if (isAtOrBelow(fs::current_path(), place)) {
    throw std::runtime_error(place.string() +
                             ": the folder is replaced; run the command in another one");
  }
  const TemporaryDirectory folder(place.parent_path());
  const fs::path draft = folder.path() / "tweak";
  tweak.preparePayloadIn(draft);
  writeContents(draft, before, after);
  tweak.replaceBy(draft);
}

}  // namespace tavlen::cli
