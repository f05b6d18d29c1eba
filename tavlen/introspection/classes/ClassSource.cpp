#include "tavlen/introspection/classes/ClassSource.h"

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen {

ClassSource preferredClassSource(const std::filesystem::path& path) {
  return MachOFile::read(openedFile(DeviceRoot::shared(), path.string())) ? ClassSource::file
                                                                          : ClassSource::process;
}

}  // namespace tavlen
