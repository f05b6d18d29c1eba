#include "cli/classes/AppForReading.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/arguments/AppArgument.h"
#include "cli/arguments/ArchiveFile.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/bundles/AppArchive.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InfoPlist.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// The files of its icon that the app in the archive has. `info` is a copy of the app with nothing
/// but its Info.plist.
std::vector<std::string> iconFiles(const IPA& info, const AppArchive& archive,
                                   const std::optional<std::string>& name) {
  std::set<std::string> found;
  namingInfo(info, [&] {
    info.infoManager().visitIconFiles(name, [&](const std::string& file) {
      std::string plain = fs::path(file).lexically_normal().string();
      if (archive.contains(plain)) found.insert(std::move(plain));
    });
  });
  return {found.begin(), found.end()};
}

/// Adds the Info.plist of each app extension: the run paths of its program, which it names, lead to
/// the libraries of the extension.
void addInfoOfExtensions(const AppArchive& archive, std::vector<std::string>& wanted) {
  for (const std::string& file : archive.files()) {
    const fs::path path = file;
    if (path.filename() == kInfoPlistFilename && path.parent_path().extension() == ".appex") {
      wanted.push_back(file);
    }
  }
}

/// The app that `text` names. A name that fits nothing may have been meant as a file's.
std::shared_ptr<IPA> appNamed(const std::string& text) {
  if (isPath(text)) return appArgument(text);
  if (std::shared_ptr<IPA> app = AppList::shared().app(text)) return app;
  const fs::file_type type = DeviceRoot::shared().status(text).type();
  const char* const reason = type == fs::file_type::directory   ? "this folder is no app's bundle"
                             : type == fs::file_type::not_found ? "no such file"
                                                                : "this file is no archive";
  if (text == "-") throw std::runtime_error("-: an app is not read from the standard input");
  throw std::runtime_error(text + ": " + reason + ", and " + unknownAppText(text));
}

}  // namespace

std::string targetBundleID(const std::string& text) {
  // The name of a file, or of an archive that is missing, is no identifier. A folder of an app's
  // sources may well be named after its identifier.
  std::error_code ignored;
  const bool isFile = fs::exists(text, ignored) && !fs::is_directory(text, ignored);
  if (!isFile && text != "-" && fs::path(text).extension() != ".ipa") return bundleIDOf(text);
  return readInfo(*AppForReading(text, AppForReading::Files::info).ipa()).bundleID;
}

AppForReading::AppForReading(const std::string& text, Files files,
                             const std::optional<std::string>& iconName,
                             const std::shared_ptr<Progress>& parent)
    : text_(text) {
  if (!isArchive(text)) {
    ipa_ = appNamed(text);
    return;
  }
  if (parent == nullptr) line_.emplace("unpacking " + text);
  folder_.emplace();
  unpack(files, iconName, parent);
}

void AppForReading::unpack(Files files, const std::optional<std::string>& iconName,
                           const std::shared_ptr<Progress>& parent) {
  const std::shared_ptr<Progress> progress = parent ? Progress::discrete(0) : line_->progress();
  if (parent) parent->addChild(progress, 1);
  // A folder with the archive's name, so that paths begin with it.
  const auto destination = [&](const char* name) {
    fs::create_directory(folder_->path() / name);
    return folder_->path() / name / fs::path(text_).filename();
  };
  try {
    AppArchive archive(text_);
    std::vector<std::string> wanted;
    if (files == Files::icon) {
      wanted = iconFiles(*archive.unpack({}, destination("info")), archive, iconName);
    } else if (files == Files::images) {
      wanted = archive.images([&](const ZIPError& fault) { faults_.push_back(errorText(fault)); });
      addInfoOfExtensions(archive, wanted);
    }
    ipa_ = archive.unpack(std::move(wanted), destination("unpacked"), progress.get());
  } catch (const std::system_error& error) {
    if (!progress->isCancelled()) throw;  // its message names a file
    throw std::system_error(std::make_error_code(std::errc::operation_canceled), text_);
  } catch (const LocalizedError& error) {
    throw std::runtime_error(text_ + ": " + errorText(error));
  }
}

}  // namespace tavlen::cli
