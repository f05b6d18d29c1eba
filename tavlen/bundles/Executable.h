#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

class IPA;

/// One Mach-O image of an app bundle: its main program, another program in it, or a dynamic
/// library.
///
/// Does not keep its app alive. Threads: calls may run side by side.
class Executable {
 public:
  enum class ErrorCase { missing };
  class Error;

  /// `relativePath` leads from the bundle's folder to the image. Nothing is read.
  Executable(std::weak_ptr<IPA> ipa, const std::filesystem::path& appDir, std::string relativePath,
             bool isMain);

  /// The app; null once it is gone.
  std::shared_ptr<IPA> ipa() const { return ipa_.lock(); }
  const std::filesystem::path& path() const { return path_; }
  bool isMain() const { return isMain_; }
  /// The file's name.
  std::string name() const { return path_.filename().string(); }
  const std::string& relativePath() const { return relativePath_; }
  /// Whether its classes are dumped from this process: when the image is loaded in it already.
  bool parseDynamically() const;

 private:
  std::weak_ptr<IPA> ipa_;
  std::filesystem::path path_;
  std::string relativePath_;
  bool isMain_;
};

class Executable::Error : public CasedError<Executable::ErrorCase> {
 public:
  /// `name` is the file's name.
  static Error missing(std::string name);

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
