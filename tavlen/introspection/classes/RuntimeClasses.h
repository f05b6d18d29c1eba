#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"

// What the run time's headers call Class and Method is a pointer to one of these.
struct objc_class;
struct objc_method;

/// What the Objective-C run time of this process knows of the classes in it. Classes are not null;
/// texts that are no UTF-8 come with U+FFFD for what is malformed.
///
/// Threads: any.
namespace tavlen {

/// Calls `block` for each class that the loaded image at `imagePath` defines, in the run time's
/// order; under GCC's run time, which has none, in that of their addresses, in which optimising
/// compilers keep the order of the source. None for an image that is not loaded.
///
/// Where there are classes, a progress of one unit a class stands for the calls; it is current
/// with one pending unit during each.
void objc_enumerateClassesOfImage(const std::filesystem::path& imagePath,
                                  FunctionRef<void(objc_class* cls)> block);

/// Calls `block` for each instance method of `cls` itself, or for each class method, in the run
/// time's order. Inherited methods do not count. A method that a category defines again comes
/// twice, and GCC's run time lists the instance methods of a root class as class methods, too.
void class_enumerateMethods(objc_class* cls, bool instanceMethods,
                            FunctionRef<void(objc_method* method)> block);

/// The names of the protocols that `cls` itself adopts, in the run time's order; nothing when it
/// adopts none.
std::optional<std::vector<std::string>> class_copyProtocolNames(objc_class* cls);

}  // namespace tavlen
