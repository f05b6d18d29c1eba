#include "tavlen/bundles/InfoManager.h"

#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/PropertyListDecoder.h"

namespace tavlen {

Info InfoManager::info() const {
  return decodePropertyList<Info>(readFile(bundleURL / "Info.plist"));
}

}  // namespace tavlen
