#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/ClassParser.h"

// What the run time's headers call Class is a pointer to one.
struct objc_class;

namespace tavlen {

/// Reads classes from the Objective-C run time of this process, for which an image is loaded into
/// it, for good, and its initialisers run.
///
/// A class is read once; its record is kept, and shared by all that ask for a class of that name.
/// Texts that are no UTF-8 come with U+FFFD for what is malformed.
///
/// Threads: any; one call waits for another, the load included. An initialiser that a parse runs
/// may ask the same parser. One that another load runs on its thread meanwhile must not: it holds
/// what the parse waits for.
class DynamicClassParser : public ClassParser {
 public:
  enum class ErrorCase { failed };
  class Error;
  /// By the names that the run time has for the classes.
  using Cache = std::unordered_map<std::string, std::shared_ptr<ObjCClass>>;

  /// The one of the process. Others share no records with it.
  static const DynamicClassParser& sharedParser();

  /// What has been read so far, as it is now.
  Cache cache() const;

  /// The methods of `cls` itself, which is not null: those of instances, or those of the class. One
  /// without an encoding is left out. They are read anew.
  ObjCClass::Methods methodsOfClass(objc_class* cls, bool instance) const;

  /// The record of `cls`, which is not null; never null. It has no mangled superclass.
  std::shared_ptr<ObjCClass> parseClass(objc_class* cls) const;

  /// The classes that the image at `path` defines, in the order of objc_enumerateClassesOfImage().
  /// Loads it first where `shouldDlopen` says so, and gives nothing, with the loader's text in the
  /// log, where that fails. An image without classes, or one that is not loaded, has an empty list.
  ///
  /// Makes a progress of one unit, which is done when the classes are.
  std::optional<Classes> parseClassesAtPath(const std::filesystem::path& path,
                                            bool shouldDlopen) const;

 private:
  /// False, and the loader's text in the log, where that fails.
  static bool load(const std::filesystem::path& path);
  /// Loads the image unless Executable::parseDynamically(). Throws Error::failed().
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
  std::shared_ptr<ObjCClass> parseNamedBelow(const std::shared_ptr<Progress>& parent,
                                             const Executable& executable,
                                             std::string_view name) const override;
  /// Calls `visit` with each class of the image, which is loaded first where that is asked for;
  /// false where it does not load. To be called with the lock held.
  bool visitClasses(const std::filesystem::path& path, bool shouldDlopen,
                    FunctionRef<void(objc_class* cls)> visit) const;
  /// The same for an executable, as one unit of `parent`. Throws Error::failed().
  void visitBelow(const std::shared_ptr<Progress>& parent, const Executable& executable,
                  FunctionRef<void(objc_class* cls)> visit) const;

  mutable std::recursive_mutex lock_;  // guards cache_, and is held for a whole parse
  mutable Cache cache_;
};

class DynamicClassParser::Error : public CasedError<DynamicClassParser::ErrorCase> {
 public:
  /// The image does not load.
  static Error failed();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
