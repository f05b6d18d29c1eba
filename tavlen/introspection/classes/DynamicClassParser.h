#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/text/SharedTextPool.h"
#include "tavlen/introspection/classes/ClassParser.h"

// The type to which the run time's `Class` points.
struct objc_class;

namespace tavlen {

/// Reads classes from the Objective-C run time of this process. Loads the image into the process,
/// where it stays, and runs its initialisers.
///
/// Each class is read once; its record is cached and shared by all who ask for a class of that
/// name. Malformed UTF-8 in texts becomes U+FFFD.
///
/// Threads: any; calls wait for one another, including for a load. An initialiser run by a parse
/// may use the same parser on its thread. An initialiser run concurrently by another load must not:
/// it holds the loader's lock, for which the parse waits.
class TAVLEN_API DynamicClassParser : public ClassParser {
 public:
  /// The cases of Error.
  enum class ErrorCase { failed };
  class Error;
  /// Class records by the run time's names.
  using Cache = std::unordered_map<std::string, std::shared_ptr<ObjCClass>>;

  /// The parser of the process. Other parsers do not share its records.
  static const DynamicClassParser& sharedParser();

  /// A copy of the records so far.
  Cache cache() const;

  /// The instance methods, or the class methods, of `cls` itself, which is not null. Methods
  /// without an encoding are left out. Not cached.
  ObjCClass::Methods methodsOfClass(objc_class* cls, bool instance) const;

  /// The record of `cls`, which is not null. Never null; its mangled superclass is always absent.
  std::shared_ptr<ObjCClass> parseClass(objc_class* cls) const;

  /// The classes that the image at `path` defines, in the order of objc_enumerateClassesOfImage().
  /// With `shouldDlopen`, loads the image first; when that fails, logs the loader's text and
  /// returns nothing. An image without classes, or one that is not loaded, has an empty list.
  ///
  /// Blocks, and cannot be cancelled. Makes a progress of one unit, which is completed with the
  /// classes.
  std::optional<Classes> parseClassesAtPath(const std::filesystem::path& path,
                                            bool shouldDlopen) const;

 private:
  /// The same as the public functions of these names, with texts of the pool: equal ones of a dump
  /// are one, and none points into an image, which may be unloaded.
  static ObjCClass::Methods methodsOfClass(objc_class* cls, bool instance, SharedTextPool& texts);
  std::shared_ptr<ObjCClass> parseClass(objc_class* cls, SharedTextPool& texts) const;
  /// Loads the image. When that fails, logs the loader's text and returns false.
  static bool load(const std::filesystem::path& path);
  /// Loads the image unless Executable::parseDynamically(). Throws Error::failed().
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
  std::shared_ptr<ObjCClass> parseNamedBelow(const std::shared_ptr<Progress>& parent,
                                             const Executable& executable,
                                             std::string_view name) const override;
  /// Calls `visit` with each class of the image, after loading it if `shouldDlopen`. Returns false
  /// when it cannot be loaded. The lock must be held.
  bool visitClasses(const std::filesystem::path& path, bool shouldDlopen,
                    FunctionRef<void(objc_class* cls)> visit) const;
  /// The same for an executable, as one unit of `parent`. Throws Error::failed().
  void visitBelow(const std::shared_ptr<Progress>& parent, const Executable& executable,
                  FunctionRef<void(objc_class* cls)> visit) const;

  mutable std::recursive_mutex lock_;  // guards cache_, and is held for a whole parse
  mutable Cache cache_;
};

/// The error of an image that cannot be loaded.
class TAVLEN_API DynamicClassParser::Error : public CasedError<DynamicClassParser::ErrorCase> {
 public:
  /// The image cannot be loaded.
  static Error failed();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
