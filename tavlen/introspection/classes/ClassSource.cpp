#include "tavlen/introspection/classes/ClassSource.h"

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen {

ClassSource preferredClassSource(const std::filesystem::path& path) {
  const DeviceRoot root = DeviceRoot::shared();
  const bool isMachO = MachOFile::read(openedFile(root, path.string())).has_value();
  return isMachO || root.hasOwnLinksAt(path) ? ClassSource::file : ClassSource::process;
}

}  // namespace tavlen
