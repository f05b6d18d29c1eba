#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "tavlen/foundation/LocalizedError.h"
#include "tavlen/introspection/ClassParser.h"

namespace tavlen {

/// Reads classes from the Objective-C run time of this process, for which the image is loaded into
/// it, for good.
class DynamicClassParser : public ClassParser {
 public:
  class Error;

  /// The one of the process.
  static DynamicClassParser& sharedParser();

  /// The classes that the image at `path` defines, loading it first where `shouldDlopen` says so.
  /// Nothing, and the loader's text in the log, where it does not load. An image without classes
  /// has an empty list.
  std::optional<Classes> parseClassesAtPath(const std::filesystem::path& path, bool shouldDlopen);

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
};

class DynamicClassParser::Error : public LocalizedError {
 public:
  enum class Case { failed };

  static Error failed();

  Case which() const { return Case::failed; }

 private:
  using LocalizedError::LocalizedError;
};

}  // namespace tavlen
