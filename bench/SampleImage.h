#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen::bench {

/// The bytes of an arm64 dylib that defines `classes`, laid out as a linker does: texts once, lists
/// of methods with absolute pointers, superclasses bound by opcodes to a library, symbols of the
/// classes. `code` is the size of the code in front of the texts, in bytes.
std::string sampleImage(const std::vector<std::shared_ptr<ObjCClass>>& classes,
                        std::size_t code = 0);

}  // namespace tavlen::bench
