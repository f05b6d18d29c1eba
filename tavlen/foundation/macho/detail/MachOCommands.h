#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/files/FilePages.h"
#include "tavlen/foundation/macho/MachOImage.h"
#include "tavlen/foundation/macho/MachOMemory.h"

namespace tavlen {

/// The load commands of an image, as far as the library needs them.
struct MachOCommands {
  /// A part of the file, which may lie outside of it.
  struct Range {
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
  };

  std::string installName;
  std::vector<MachOImage::Library> libraries;
  std::vector<std::string> runPaths;
  std::vector<MachOImage::Section> sections;
  std::vector<MachOMemory::Segment> segments;  ///< cut off where the file ends
  std::uint64_t base = 0;                      ///< the address of the header
  std::uint32_t platform = 0;                  ///< 0 if unknown
  std::uint32_t minimumOS = 0;                 ///< 16 bits, then twice 8; 0 if unknown
  bool isEncrypted = false;
  std::optional<Range> binds;          ///< the opcodes that bind pointers when the image is loaded
  std::optional<Range> chainedFixups;  ///< instead of opcodes

  /// Reads the commands of an image. Throws MachOImage::Error, and std::system_error when reading
  /// fails.
  static MachOCommands read(FilePages& image);
};

}  // namespace tavlen
