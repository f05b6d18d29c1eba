#pragma once

#include <string>

#include "tavlen/introspection/classes/StaticClassParser.h"

namespace tavlen {

/// What `llvm-objdump --macho --objc-meta-data` prints of an image, as the static parser's result:
/// without the paths of superclasses, which it does not print, and without the slice. It follows
/// neither chained fixups nor relative method lists. Names are as in the file: mangled.
StaticClassParser::Result resultFromObjdump(const std::string& text);

}  // namespace tavlen
