#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The encodings of all methods of all classes of GNUstep's Foundation, unordered. Stores their
/// number in `count`. They are never freed.
const char* const* copyMethodEncodings(size_t* count);

/// Creates a method signature for each encoding, reads the types of its result and its arguments,
/// and returns the number of types. Uses one autorelease pool for every 1,000 encodings. This
/// Foundation does not cache signatures: every call creates a new object.
size_t readSignatures(const char* const* encodings, size_t count);

#ifdef __cplusplus
}
#endif
