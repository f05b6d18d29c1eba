#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tavlen/introspection/classes/ObjCClass.h"

namespace tavlen::bench {

/// `count` classes with twenty methods each, as a dump of a system image has them: long selectors
/// of which few come twice, encodings of 7 to 60 characters that come again and again. The same in
/// every run.
std::vector<std::shared_ptr<ObjCClass>> sampleClasses(std::size_t count);

}  // namespace tavlen::bench
