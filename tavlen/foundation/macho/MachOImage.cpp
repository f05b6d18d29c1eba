#include "tavlen/foundation/macho/MachOImage.h"

#include <array>
#include <utility>

#include "tavlen/foundation/files/FilePages.h"
#include "tavlen/foundation/macho/detail/MachOCommands.h"
#include "tavlen/foundation/macho/detail/MachOPointers.h"

namespace tavlen {

namespace {

/// The names of the platforms, as in <mach-o/loader.h>, from number 0 on.
constexpr std::array<std::string_view, 13> kPlatforms = {"",
                                                         "macOS",
                                                         "iOS",
                                                         "tvOS",
                                                         "watchOS",
                                                         "bridgeOS",
                                                         "Mac Catalyst",
                                                         "iOS simulator",
                                                         "tvOS simulator",
                                                         "watchOS simulator",
                                                         "DriverKit",
                                                         "visionOS",
                                                         "visionOS simulator"};

}  // namespace

MachOImage::MachOImage(std::shared_ptr<const RandomAccessFile> file, const MachOSlice& slice)
    : slice_(slice) {
  if (!slice.is64Bit) throw Error::unsupportedArchitecture(slice.architecture());
  // Offsets within an image have 32 bits.
  if (slice.size > UINT32_MAX) throw Error::damaged("the image has more than 4 GiB");
  const auto pages = std::make_shared<FilePages>(std::move(file), slice.offset,
                                                 static_cast<std::size_t>(slice.size));
  commands_ = std::make_unique<MachOCommands>(MachOCommands::read(*pages));
  memory_ = std::make_unique<MachOMemory>(pages, commands_->segments);
  pointers_ = std::make_unique<MachOPointers>(*commands_, *pages);
}

MachOImage::MachOImage(MachOImage&& other) noexcept = default;
MachOImage& MachOImage::operator=(MachOImage&& other) noexcept = default;
MachOImage::~MachOImage() = default;

const std::string& MachOImage::installName() const { return commands_->installName; }

const std::vector<MachOImage::Library>& MachOImage::libraries() const {
  return commands_->libraries;
}

const std::vector<std::string>& MachOImage::runPaths() const { return commands_->runPaths; }

std::string MachOImage::platform() const {
  const std::uint32_t number = commands_->platform;
  return std::string(number < kPlatforms.size() ? kPlatforms[number] : "");
}

std::string MachOImage::minimumOS() const {
  constexpr std::uint32_t kByte = 0xFF;
  const std::uint32_t version = commands_->minimumOS;
  if (version == 0) return {};
  const std::string patch = (version & kByte) == 0 ? "" : "." + std::to_string(version & kByte);
  return std::to_string(version >> 16) + "." + std::to_string(version >> 8 & kByte) + patch;
}

bool MachOImage::isEncrypted() const { return commands_->isEncrypted; }

const std::vector<MachOImage::Section>& MachOImage::sections() const { return commands_->sections; }

MachOImage::Pointer MachOImage::pointerAt(std::uint64_t address) const {
  return pointers_->pointerAt(*memory_, address);
}

const std::string& MachOImage::fixupsFault() const { return pointers_->fault(); }

MachOImage::Error MachOImage::Error::unsupportedArchitecture(std::string architecture) {
  return {Case::unsupportedArchitecture,
          {"macho_image.error.unsupported_architecture",
           "The architecture %@ is not supported: its pointers do not have 64 bits"},
          {std::move(architecture)}};
}

MachOImage::Error MachOImage::Error::damaged(std::string fault) {
  return {
      Case::damaged, {"macho_image.error.damaged", "The image is damaged: %@"}, {std::move(fault)}};
}

}  // namespace tavlen
