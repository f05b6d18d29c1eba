#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tavlen/foundation/LocalizedError.h"

namespace tavlen {

/// A handle on one tweak folder.
///
/// It holds no document: every call reads the folder again, so two handles on it agree.
/// Threads: calls may run side by side.
class TweakFile {
 public:
  class Error;
  struct Manifest;

  /// Opens the folder at `url` and reads its manifest once, to check it. Errors as validate()'s.
  static std::shared_ptr<TweakFile> at(const std::filesystem::path& url);

  TweakFile(const TweakFile&) = delete;
  TweakFile& operator=(const TweakFile&) = delete;

  /// The tweak's folder, without a slash at its end.
  const std::filesystem::path& url() const { return url_; }
  /// The folder's name.
  std::string id() const { return url_.filename().string(); }
  std::filesystem::path resourcesDir() const;

  /// Throws Error::notFound unless a folder stands at url(), and what manifest() throws.
  void validate() const;

  /// Reads Manifest.json. Throws Error::missing when it is not there; DecodingError, and
  /// std::system_error where the file cannot be read, pass through.
  Manifest manifest() const;

  /// The user's script; empty when it cannot be read.
  std::string script() const;
  /// The user's script, or nothing when there is none. Throws std::system_error where it is there
  /// and cannot be read.
  std::optional<std::string> readScript() const;

 private:
  explicit TweakFile(std::filesystem::path url) : url_(std::move(url)) {}

  std::filesystem::path url_;
};

class TweakFile::Error : public LocalizedError {
 public:
  enum class Case { missing, notFound };

  /// `file` is the name of the file that is missing.
  static Error missing(std::string file);
  static Error notFound();

  Case which() const { return case_; }
  bool operator==(const Error& other) const {
    return case_ == other.case_ && payload() == other.payload();
  }

 private:
  Error(Case which, LocalizedText text, std::vector<std::string> payload = {})
      : LocalizedError(text, std::move(payload)), case_(which) {}

  Case case_;
};

}  // namespace tavlen
