#pragma once

#include <memory>
#include <string_view>

#include "tavlen/foundation/objc/MethodSignature.h"

struct objc_object;

namespace tavlen {

/// The platform's own signature, an NSMethodSignature, asked through the run time: every answer is
/// the object's. Objective-C exceptions end here; what raises one answers nothing, or zero.

/// Null for an encoding from which the platform makes none, for one that nests so deep that the
/// platform is not asked, and where there is no such class.
std::shared_ptr<const MethodSignature> platformSignature(std::string_view encoding);

/// Wraps `signature`, which is retained. Null for nil.
std::shared_ptr<const MethodSignature> platformSignature(objc_object* signature);

}  // namespace tavlen
