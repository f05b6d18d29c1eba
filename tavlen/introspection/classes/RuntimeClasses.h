#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

// The types to which the run time's `Class` and `Method` point.
struct objc_class;
struct objc_method;

/// Queries to the Objective-C run time of this process about its classes. Classes must not be null.
/// Malformed UTF-8 in texts becomes U+FFFD.
///
/// Threads: any.
namespace tavlen {

/// Calls `block` for each class that the loaded image at `imagePath` defines, in the run time's
/// order. GCC's run time has no order; there classes are sorted by address, which with optimising
/// compilers is the order of the source. No calls for an image that is not loaded.
///
/// If there are classes, makes a progress with one unit for each. It is current, with one pending
/// unit, during each call.
TAVLEN_API void objc_enumerateClassesOfImage(const std::filesystem::path& imagePath,
                                             FunctionRef<void(objc_class* cls)> block);

/// Calls `block` for each instance method, or each class method, of `cls` itself, in the run time's
/// order, without inherited methods. A method that a category replaces occurs twice, and GCC's run
/// time lists the instance methods of a root class as class methods as well.
TAVLEN_API void class_enumerateMethods(objc_class* cls, bool instanceMethods,
                                       FunctionRef<void(objc_method* method)> block);

/// The names of the protocols that `cls` itself adopts, in the run time's order; nothing when it
/// adopts none.
TAVLEN_API std::optional<std::vector<std::string>> class_copyProtocolNames(objc_class* cls);

}  // namespace tavlen
