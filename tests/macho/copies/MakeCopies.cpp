// Makes the Mach-O images that no linker at hand makes: copies of linked ones with other fixups,
// flags and slices.
//   MakeMachOCopies FOLDER: reads the linked images there, and writes the copies next to them.
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/macho/copies/Fixups.h"

namespace tavlen::macho {
namespace {

class Folder {
 public:
  explicit Folder(std::string path) : path_(std::move(path)) {}

  ImageBytes image(const std::string& name) const {
    std::ifstream file(path_ + '/' + name, std::ios::binary);
    file.exceptions(std::ios::failbit);
    return ImageBytes(std::string(std::istreambuf_iterator<char>(file), {}));
  }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path_ + '/' + name, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << bytes;
  }

 private:
  std::string path_;
};

/// As images of stores are: the texts are noise.
ImageBytes encrypted(ImageBytes image) {
  const std::size_t command = image.command(ImageBytes::kEncryption);
  image.set(command + 16, std::uint32_t{1});
  const auto begin = image.get<std::uint32_t>(command + 8);
  const auto size = image.get<std::uint32_t>(command + 12);
  for (std::uint32_t at = begin; at < begin + size; ++at) {
    image.set(at, static_cast<std::uint8_t>(image.get<std::uint8_t>(at) ^ (at * 37 + 11)));
  }
  return image;
}

ImageBytes withFileType(ImageBytes image, std::uint32_t type) {
  image.set(ImageBytes::kFileTypeAt, type);
  return image;
}

std::string bigEndian(std::uint64_t value, unsigned bytes) {
  std::string text;
  while (bytes > 0) text += static_cast<char>(value >> 8 * --bytes);
  return text;
}

/// A fat file. The header's entries have 64-bit offsets if `isWide`.
std::string fat(const std::vector<std::string>& slices, bool isWide) {
  constexpr unsigned kPageBits = 14;
  constexpr std::uint64_t kPage = 1 << kPageBits;
  const unsigned word = isWide ? 8 : 4;
  std::string table = bigEndian(isWide ? 0xCAFEBABF : 0xCAFEBABE, 4) + bigEndian(slices.size(), 4);
  std::string bodies;
  for (const std::string& each : slices) {
    bodies.resize(roundedUp(bodies.size(), kPage));
    const ImageBytes image(each);
    table += bigEndian(image.get<std::uint32_t>(4), 4) + bigEndian(image.get<std::uint32_t>(8), 4) +
             bigEndian(kPage + bodies.size(), word) + bigEndian(each.size(), word) +
             bigEndian(kPageBits, 4) + (isWide ? bigEndian(0, 4) : "");
    bodies += each;
  }
  table.resize(kPage);
  return table + bodies;
}

/// The image without the number that every slice begins with.
std::string withoutMagic(const ImageBytes& image) {
  ImageBytes broken = image;
  broken.set(0, std::uint32_t{0});
  return broken.bytes();
}

void makeCopies(const Folder& folder) {
  struct Form {
    const char* name;
    PointerFormat pointers;
    ImportFormat imports;
  };
  const Form forms[] = {{"chained6", PointerFormat::plainOffset, ImportFormat::plain},
                        {"imports2", PointerFormat::plain, ImportFormat::addend},
                        {"imports3", PointerFormat::plain, ImportFormat::addend64},
                        {"arm64e1", PointerFormat::arm64e, ImportFormat::plain},
                        {"arm64e9", PointerFormat::arm64eUserland, ImportFormat::plain},
                        {"arm64e12", PointerFormat::arm64eUserland24, ImportFormat::addend64}};
  // One image has its base at 0, the other does not.
  for (const std::string source : {"Shapes", "Sketch"}) {
    const ImageBytes chained = folder.image(source + ".chained");
    for (const auto& [name, pointers, imports] : forms) {
      folder.write(source + '.' + name, withFixups(chained, pointers, imports).bytes());
    }
    folder.write(source + ".threaded", withThreadedOpcodes(chained).bytes());
  }

  const ImageBytes shapes = folder.image("Shapes");
  const ImageBytes intel = folder.image("Shapes.intel");
  const std::string arm64e = folder.image("Shapes.arm64e9").bytes();
  folder.write("Shapes.encrypted", encrypted(shapes).bytes());
  folder.write("Shapes.dSYM", withFileType(shapes, 10).bytes());
  folder.write("Shapes.fat", fat({intel.bytes(), arm64e, shapes.bytes()}, false));
  folder.write("Shapes.fat64", fat({intel.bytes(), arm64e, shapes.bytes()}, true));
  folder.write("Shapes.brokenSlice", fat({withoutMagic(shapes), intel.bytes()}, false));
}

}  // namespace
}  // namespace tavlen::macho

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: MakeMachOCopies FOLDER");
    tavlen::macho::makeCopies(tavlen::macho::Folder(argv[1]));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "MakeMachOCopies: " << error.what() << '\n';
    return 1;
  }
}
