#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/macho/MachOFile.h"
#include "tavlen/foundation/macho/MachOMemory.h"

namespace tavlen {

class MachOPointers;
class RandomAccessFile;
struct MachOCommands;

/// A 64-bit image of a Mach-O file: its load commands, its bytes by address, its pointers.
///
/// Nothing in the file is trusted. Only the pages that are asked for are read.
/// Threads: one object one thread at a time.
class TAVLEN_API MachOImage {
 public:
  /// The cases of Error.
  enum class ErrorCase { unsupportedArchitecture, damaged };
  class Error;

  /// A library that the image loads.
  struct Library {
    std::string name;     ///< as written in the image, for example "@rpath/Kit.framework/Kit"
    bool isWeak = false;  ///< whether the image loads without it
  };
  /// A named range of addresses.
  struct Section {
    std::string name;
    std::uint64_t address = 0;
    std::uint64_t size = 0;  ///< in bytes
  };
  /// The content of a place for a pointer.
  struct Pointer {
    /// The kinds of contents. `unreadable` is a place outside of the file, or a malformed value.
    enum class Kind { null, address, symbol, unreadable };

    Kind kind = Kind::null;
    std::uint64_t address = 0;  ///< of Kind::address, in this image
    /// Of Kind::symbol: what another image exports; valid as long as the image.
    std::string_view symbol;
    /// Of Kind::symbol: 1 is the first of libraries(), 0 the image itself, -1 the main executable;
    /// others are searches by the loader.
    int ordinal = 0;
  };

  /// Reads the load commands of `slice`. Throws Error, and std::system_error when reading fails.
  MachOImage(std::shared_ptr<const RandomAccessFile> file, const MachOSlice& slice);
  MachOImage(MachOImage&& other) noexcept;
  MachOImage& operator=(MachOImage&& other) noexcept;
  ~MachOImage();

  /// The slice.
  const MachOSlice& slice() const { return slice_; }
  /// The name by which other images load it; empty for an image that is not a dylib.
  const std::string& installName() const;
  /// The libraries that it loads, in the order to which ordinals refer.
  const std::vector<Library>& libraries() const;
  /// The folders in which the loader searches "@rpath", as written.
  const std::vector<std::string>& runPaths() const;
  /// The platform, such as "iOS" or "iOS simulator"; empty if unknown.
  std::string platform() const;
  /// The lowest version of the system that it runs on, such as "14.0"; empty if unknown.
  std::string minimumOS() const;
  /// Whether bytes of the image are encrypted, as in apps of the store.
  bool isEncrypted() const;
  /// The sections in the order of the file.
  const std::vector<Section>& sections() const;

  /// The bytes by address.
  const MachOMemory& memory() const { return *memory_; }
  /// The content of the eight bytes at `address`. Throws std::system_error when reading fails.
  Pointer pointerAt(std::uint64_t address) const;
  /// Why some pointers cannot be read; empty if all can.
  const std::string& fixupsFault() const;

 private:
  MachOSlice slice_;
  std::unique_ptr<MachOCommands> commands_;
  std::unique_ptr<MachOMemory> memory_;
  std::unique_ptr<MachOPointers> pointers_;
};

/// The error of an image that cannot be read.
class TAVLEN_API MachOImage::Error : public CasedError<MachOImage::ErrorCase> {
 public:
  /// The slice has no 64-bit pointers.
  static Error unsupportedArchitecture(std::string architecture);
  /// `fault` is the reason, such as "the load commands end too early".
  static Error damaged(std::string fault);

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
