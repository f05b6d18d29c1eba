#pragma once

#include <memory>
#include <string_view>

#include "tavlen/foundation/objc/SignatureObject.h"

namespace tavlen {

/// The signature that `encoding` describes, for Apple's arm64 devices. Null where the platform
/// there makes none: for a malformed or empty encoding, and for one with a type that has no layout
/// by value (layoutOfType()). Offsets are not looked at.
///
/// The frame is 224 bytes, which is what the platform reports while every argument fits into the
/// eight general and eight floating-point registers, and the bytes that the others take on the
/// stack, rounded up to 8. That addition follows the calling convention and was not seen on a
/// device: aggregates above 16 bytes and arrays go by address, up to four floats of one type in
/// floating-point registers, a scalar on the stack takes its own size only.
///
/// Work and memory are linear in the encoding's length.
std::shared_ptr<const SignatureObject> encodedSignature(std::string_view encoding);

}  // namespace tavlen
