#pragma once

#include <memory>
#include <string_view>

#include "tavlen/foundation/objc/MethodSignature.h"

namespace tavlen {

/// The signature that `encoding` describes, for Apple's arm64 devices. Null where the platform
/// there makes none: for a malformed or empty encoding, and for one with a type that has no layout
/// by value (layoutOfType()). Offsets are not looked at.
///
/// The frame is always 224 bytes, which is what the platform reports while every argument fits into
/// the registers. What it reports beyond that is not known.
///
/// Work and memory are linear in the encoding's length.
std::shared_ptr<const MethodSignature> encodedSignature(std::string_view encoding);

}  // namespace tavlen
