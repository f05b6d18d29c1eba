#include "tavlen/introspection/classes/ClassSource.h"

#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen {

ClassSource preferredClassSource(const std::filesystem::path& path) {
  return MachOFile::read(RandomAccessFile(path)) ? ClassSource::file : ClassSource::process;
}

}  // namespace tavlen
