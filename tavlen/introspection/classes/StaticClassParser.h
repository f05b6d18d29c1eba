#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/macho/MachOFile.h"
#include "tavlen/introspection/classes/ClassParser.h"

namespace tavlen {

/// Reads classes from the Mach-O file of an image, without running any of its code.
///
/// Threads: any; calls run concurrently.
class TAVLEN_API StaticClassParser : public ClassParser {
 public:
  /// The cases of Error.
  enum class ErrorCase {
    notMachO,
    architectureMissing,
    unsupportedArchitecture,
    notLinked,
    encrypted,
    damaged
  };
  class Error;

  /// Methods that the image adds to a class of another image.
  struct Category {
    /// The class's name.
    SharedText className;
    /// The category's own name.
    SharedText name;
    ObjCClass::Methods methods;         ///< instance methods first, then class methods
    std::vector<SharedText> protocols;  ///< names of the adopted protocols
  };

  /// What an image holds.
  struct Result {
    /// The classes that the image defines, in the order of its class list; the methods of its own
    /// categories are among those of their classes, as in the run time: last attached first.
    Classes classes;
    /// Categories of classes of other images, in the order of the file.
    std::vector<Category> categories;
    /// One sentence for each class or method that could not be read.
    std::vector<std::string> diagnostics;
    /// The slice that was read.
    MachOSlice slice;
  };

  /// A parser that reads the slice of `architecture`, such as "arm64e"; by default the preferred
  /// one.
  explicit StaticClassParser(std::string architecture = {})
      : architecture_(std::move(architecture)) {}

  /// Reads all classes and categories. Malformed metadata costs its class or method and leaves a
  /// diagnostic. Blocks. Reports its progress as one unit of `parent`, which may be null;
  /// cancelling that ends the work with ECANCELED. Throws Error, and std::system_error when the
  /// file cannot be read.
  Result parseImage(const Executable& executable,
                    const std::shared_ptr<Progress>& parent = nullptr) const;

 private:
  Classes parseBelow(const std::shared_ptr<Progress>& parent,
                     const Executable& executable) const override;
  std::shared_ptr<ObjCClass> parseNamedBelow(const std::shared_ptr<Progress>& parent,
                                             const Executable& executable,
                                             std::string_view name) const override;

  std::string architecture_;
};

/// The error of an image without readable classes.
class TAVLEN_API StaticClassParser::Error : public CasedError<StaticClassParser::ErrorCase> {
 public:
  /// The file is not a Mach-O file.
  static Error notMachO();
  /// The file has no slice of the architecture; `available` lists those that it has.
  static Error architectureMissing(std::string architecture, std::string available);
  /// The slice of that architecture has no 64-bit pointers.
  static Error unsupportedArchitecture(std::string architecture);
  /// The slice is an object file, a debug companion or another image without classes in memory.
  static Error notLinked(std::string architecture);
  /// The slice of that architecture is encrypted; only the remote parser can tell its classes.
  static Error encrypted(std::string architecture);
  /// The load commands cannot be read; `fault` says why.
  static Error damaged(std::string fault);

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
