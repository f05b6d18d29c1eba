#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

class IPA;

/// A Mach-O image of an app bundle: its main program, another program, or a dynamic library.
///
/// Does not keep its app alive. Threads: calls may run concurrently.
class TAVLEN_API Executable {
 public:
  /// The cases of Error.
  enum class ErrorCase { missing };
  class Error;

  /// `relativePath` leads from the bundle's folder `appDir` to the image. Reads nothing.
  Executable(std::weak_ptr<IPA> ipa, const std::filesystem::path& appDir, std::string relativePath,
             bool isMain);

  /// The app; null once it is destroyed.
  std::shared_ptr<IPA> ipa() const { return ipa_.lock(); }
  /// The image's file, as a host path.
  const std::filesystem::path& path() const { return path_; }
  /// Whether it is the app's main program.
  bool isMain() const { return isMain_; }
  /// The file's name.
  std::string name() const { return path_.filename().string(); }
  /// The path from the bundle's folder.
  const std::string& relativePath() const { return relativePath_; }
  /// Whether its classes can be dumped in this process, because the image is already loaded.
  bool parseDynamically() const;

 private:
  std::weak_ptr<IPA> ipa_;
  std::filesystem::path path_;
  std::string relativePath_;
  bool isMain_;
};

/// The error of a missing image.
class TAVLEN_API Executable::Error : public CasedError<Executable::ErrorCase> {
 public:
  /// `name` is the file's name.
  static Error missing(std::string name);

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
