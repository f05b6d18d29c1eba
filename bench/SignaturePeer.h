#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The encodings of all methods of all classes of GNUstep's Foundation, in no order; `count`
/// becomes their number. They live as long as the program.
const char* const* copyMethodEncodings(size_t* count);

/// Makes a method signature of each encoding and asks it for its result's type and every
/// argument's. The number of types. A pool for every 1,000 encodings. This Foundation keeps no
/// signatures: the same encoding gives another object each time.
size_t readSignatures(const char* const* encodings, size_t count);

#ifdef __cplusplus
}
#endif
