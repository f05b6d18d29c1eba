#pragma once

#include <memory>
#include <string_view>

#include "tavlen/foundation/objc/MethodSignature.h"

namespace tavlen {

/// The signature that `encoding` describes, for Apple's arm64 devices. Null where the platform
/// returns nil: for a malformed or empty encoding, and for one with a type that has no layout by
/// value (layoutOfType()). Offsets are ignored.
///
/// The frame is always 224 bytes: the size that the platform reports while all arguments fit into
/// registers. Its value for more arguments is not known.
///
/// Work and memory are linear in the encoding's length.
std::shared_ptr<const MethodSignature> encodedSignature(std::string_view encoding);

}  // namespace tavlen
