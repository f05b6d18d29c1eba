#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen::bench {

/// `count` classes with twenty methods each, similar to a dump of a system image: long selectors
/// that seldom repeat, and encodings of 7 to 60 characters that often repeat. The same in every
/// run.
std::vector<std::shared_ptr<ObjCClass>> sampleClasses(std::size_t count);

}  // namespace tavlen::bench
