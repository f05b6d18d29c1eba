#pragma once

#include "tavlen/foundation/coding/Encoder.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen::cli {

/// Encodes a type as a record; null if `root` is null.
///
/// Every node has a `kind` and, if it has any, `qualifiers`. The root and nodes without parts have
/// an `encoding`; the root has a `declaration`. Further keys are the properties of the node's
/// class, without absent ones. Bytes that are not UTF-8 are replaced. Throws EncodingError.
void encodeTypeTree(Encoder& encoder, const JXType* root);

}  // namespace tavlen::cli
