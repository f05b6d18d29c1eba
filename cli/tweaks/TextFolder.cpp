#include "cli/tweaks/TextFolder.h"

#include <cerrno>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "cli/arguments/StoredItem.h"
#include "cli/items/StoreLock.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/NewFolder.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/tweaks/AttachedFiles.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/tweaktext/TweakTextReader.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

bool isTweakText(const fs::path& file) {
  try {
    readTweakText(readFile(file));
    return true;
  } catch (const TOMLError&) {
    return false;
  }
}

/// A write that a signal ends between two files (RAII).
class Writing {
 public:
  explicit Writing(const fs::path& folder) : folder_(folder), line_("writing " + folder.string()) {}

  void continueUnlessCancelled() const {
    if (line_.progress()->isCancelled())
      throw std::system_error(ECANCELED, std::generic_category(), folder_.string());
  }

 private:
  fs::path folder_;
  ProgressLine line_;
};

/// Writes everything into the empty folder `draft`.
void writeDraft(const TweakContents& contents, const std::string& text, const fs::path& draft,
                const Writing& writing) {
  for (const auto& [name, from] : contents.files) {
    copyAttachedFile(from, draft, name);
    writing.continueUnlessCancelled();
  }
  if (contents.icon) replaceFile(draft / TweakFile::iconFile, contents.icon->pngData());
  if (contents.script) replaceFile(draft / TweakFile::scriptFile, *contents.script);
  replaceFile(draft / kTextFile, text);
  writing.continueUnlessCancelled();
}

void requireOwnFolder(const fs::path& folder) {
  if (fs::is_empty(folder)) return;
  const fs::path text = folder / kTextFile;
  if (!isTaken(text))
    throw std::runtime_error(folder.string() + ": is not empty and has no " + kTextFile);
  requireReplaceable(text);
}

void writeNewFolder(const TweakContents& contents, const std::string& text,
                    const fs::path& folder) {
  const Writing writing(folder);
  makeFolder(folder, [&](const fs::path& draft) { writeDraft(contents, text, draft, writing); });
}

void writeIntoFolder(const TweakContents& contents, const std::string& text,
                     const fs::path& folder) {
  requireOwnFolder(folder);
  const Writing writing(folder);
  const fs::path place = fs::canonical(folder);
  const TemporaryDirectory work(place);
  const fs::path draft = work.path() / place.filename();
  callInDraft(draft, folder, [&] {
    fs::create_directories(draft);
    writeDraft(contents, text, draft, writing);
  });
  std::vector<std::unique_ptr<FileReplacement>> replacements;
  const StoreLock lock = StoreLock::ofFolder(fs::absolute(folder));
  writing.continueUnlessCancelled();
  for (const char* name : {TweakFile::iconFile, TweakFile::scriptFile, kTextFile}) {
    if (!fs::exists(draft / name)) continue;
    replacements.push_back(
        std::make_unique<FileReplacement>(folder / name, readFile(draft / name)));
  }
  for (const auto& file : contents.files) moveAttachedFile(draft, folder, file.first);
  for (const auto& replacement : replacements) replacement->commit();
  for (const std::string& name : attachedFiles(folder, folder.string())) {
    if (contents.files.contains(name)) continue;
    printWarning((folder / name).string() + ": is not a file of the tweak; apply would add it");
  }
}

}  // namespace

void requireReplaceable(const fs::path& file) {
  if (isTaken(file) && !isTweakText(file)) {
    throw std::runtime_error(file.string() + ": already exists and is not the text of a tweak");
  }
}

void writeTextFolder(const TweakContents& contents, const std::string& text,
                     const fs::path& folder) {
  if (fs::is_directory(folder)) return writeIntoFolder(contents, text, folder);
  writeNewFolder(contents, text, folder);
}

}  // namespace tavlen::cli
