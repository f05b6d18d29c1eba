#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/ZIPFileReader.h"

namespace tavlen {

class IPA;

/// The app in an archive (.ipa) from an untrusted source. Unpacks single files of it, and judges
/// only those, by the rules and limits of ZIPArchive.
///
/// Threads: one object one thread at a time.
class TAVLEN_API AppArchive {
 public:
  /// The cases of Error.
  enum class ErrorCase { noApp, severalApps };
  class Error;

  /// Finds the app in the archive. Blocks while it reads the archive's directory, and cannot be
  /// cancelled. Throws Error, ZIPError when the archive's directory is damaged,
  /// and std::system_error.
  explicit AppArchive(const std::filesystem::path& archive);

  /// The app's folder in the archive, such as "Payload/Notes.app".
  const std::string& bundle() const { return bundle_; }
  /// The app's files, relative to its folder, sorted.
  const std::vector<std::string>& files() const { return files_; }
  /// Whether the app has that file; `file` is a path relative to its folder.
  bool contains(const std::string& file) const;
  /// The files, relative to the app's folder, that begin like Mach-O images, sorted.
  /// A file whose beginning cannot be read is passed to `skip` and left out. Blocks while it reads
  /// the beginnings of all files, and cannot be cancelled.
  std::vector<std::string> images(FunctionRef<void(const ZIPError& fault)> skip);

  /// Unpacks the app's Info.plist, and `files`, which the app has, into the new folder
  /// `destination`, under their names in the archive. Returns a handle on the app there. Blocks.
  /// `progress`, which may be null, reports and cancels unpacking. Throws
  /// IPA::Error::invalidIPA without an Info.plist, and what ZIPFileReader::unpack() throws.
  std::shared_ptr<IPA> unpack(std::vector<std::string> files,
                              const std::filesystem::path& destination,
                              Progress* progress = nullptr);

 private:
  ZIPFileReader reader_;
  std::string bundle_;
  std::vector<std::string> files_;
};

/// The error of an archive without exactly one app.
class TAVLEN_API AppArchive::Error : public CasedError<AppArchive::ErrorCase> {
 public:
  /// The folder Payload of the archive has no app.
  static Error noApp();
  /// It has two apps or more, of which these are two.
  static Error severalApps(std::string first, std::string second);

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
