#pragma once

#include <filesystem>

namespace tavlen::cli {

/// A folder among the temporary files (RAII), of which messages do not tell.
class TemporaryTweak {
 public:
  /// Creates it. Throws std::system_error.
  TemporaryTweak();
  TemporaryTweak(const TemporaryTweak&) = delete;
  TemporaryTweak& operator=(const TemporaryTweak&) = delete;
  /// Removes it with its contents.
  ~TemporaryTweak();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tavlen::cli
