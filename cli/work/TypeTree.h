#pragma once

#include "tavlen/foundation/coding/Encoder.h"
#include "tavlen/introspection/types/JXType.h"

namespace tavlen::cli {

/// Writes a type as a record, or null where there is none.
///
/// Every node has its `kind` and, where it has any, its `qualifiers`; the root and nodes without
/// parts have their `encoding`; the root has its `declaration`. The other keys are the properties
/// of the node's class; what is absent there is left out. Bytes that are not UTF-8 are replaced.
void encodeTypeTree(Encoder& encoder, const JXType* root);

}  // namespace tavlen::cli
