// Works on a keyed archive of classes in a separate process:
//   ArchiveFile write FILE COUNT    writes an archive of COUNT classes
//   ArchiveFile grow FILE           reads it into records, and prints the peak growth of the
//                                   process, without the file's bytes, as a multiple of its size
#include <charconv>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "SampleClasses.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace {

/// A field of /proc/self/status, in bytes.
double statusBytes(std::string_view field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (!line.starts_with(field)) continue;
    const std::size_t digits = line.find_first_of("0123456789");
    double kilobytes = 0;
    std::from_chars(line.data() + digits, line.data() + line.size(), kilobytes);
    return kilobytes * 1024;
  }
  return 0;
}

void write(const std::string& file, std::string_view countText) {
  std::size_t count = 0;
  std::from_chars(countText.data(), countText.data() + countText.size(), count);
  std::ofstream(file, std::ios::binary)
      << tavlen::encodeKeyedArchive(tavlen::bench::sampleClasses(count));
}

void printGrowth(const std::string& file) {
  using Classes = std::vector<std::shared_ptr<tavlen::ObjCClass>>;
  const std::string bytes = tavlen::readFile(file);
  const double before = statusBytes("VmRSS:");
  const auto classes = tavlen::decodeKeyedArchive<Classes>(bytes);
  const double growth = statusBytes("VmHWM:") - before;
  std::cout << growth / static_cast<double>(bytes.size()) << '\n';
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view task = count > 1 ? arguments[1] : "";
  if (task == "write" && count == 4) {
    write(arguments[2], arguments[3]);
  } else if (task == "grow" && count == 3) {
    printGrowth(arguments[2]);
  } else {
    return 2;
  }
  return 0;
}
