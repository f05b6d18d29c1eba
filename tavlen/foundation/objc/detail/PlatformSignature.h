#pragma once

#include <memory>
#include <string_view>

#include "tavlen/foundation/objc/MethodSignature.h"

struct objc_object;

namespace tavlen {

/// Signatures of the platform: each wraps an NSMethodSignature and asks it through the run time.
/// Objective-C exceptions are caught; a call that raises one returns nothing or zero.

/// Null for an encoding of which the platform makes no signature, for one nested too deeply to be
/// passed to the platform, and when the class is missing.
std::shared_ptr<const MethodSignature> platformSignature(std::string_view encoding);

/// Wraps `signature` and retains it. Null for nil.
std::shared_ptr<const MethodSignature> platformSignature(objc_object* signature);

}  // namespace tavlen
