// Works on Mach-O images, for bench/image_benchmark.py:
//   ImageDump write FILE CLASSES CODE     writes an image of so many classes, and so many bytes of
//   code ImageDump walk FILE                   looks at all classes and methods, without making
//   records ImageDump records FILE                reads them into records
// The last two print the number of methods, and the processor time in milliseconds.
#include <charconv>
#include <ctime>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>

#include "SampleClasses.h"
#include "SampleImage.h"
#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/introspection/classes/StaticClassParser.h"
#include "tavlen/introspection/classes/detail/ObjCMetadata.h"

namespace {

using namespace tavlen;

double processorMilliseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

void print(std::size_t methods, double begin) {
  std::cout << methods << ' ' << processorMilliseconds() - begin << '\n';
}

void walk(const std::string& path) {
  const double begin = processorMilliseconds();
  const auto file = std::make_shared<const RandomAccessFile>(path);
  const MachOImage image(file, MachOFile::read(*file).value().preferred());
  ObjCMetadata metadata(image);
  std::size_t methods = 0;
  std::size_t bytes = 0;  // so that texts are looked at
  for (std::size_t i = 0; i < metadata.classCount(); ++i) {
    const auto cls = metadata.classAt(i);
    if (!cls) continue;
    for (const std::string_view each : metadata.protocolsOf(*cls)) bytes += each.size();
    metadata.visitMethods(*cls, [&](const ObjCMetadata::Method& method) {
      ++methods;
      bytes += method.selector.size() + method.encoding.size();
    });
  }
  if (bytes == 0) throw std::runtime_error("the image has no texts");
  print(methods, begin);
}

void readRecords(const std::string& path) {
  const Executable executable({}, "/", path.substr(1), false);
  const double begin = processorMilliseconds();
  const auto result = StaticClassParser().parseImage(executable);
  const double end = processorMilliseconds();
  std::size_t methods = 0;
  for (const auto& each : result.classes) methods += each->methods.size();
  print(methods, begin + processorMilliseconds() - end);
}

std::size_t number(std::string_view text) {
  std::size_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

void write(const std::string& path, std::size_t classes, std::size_t code) {
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file << bench::sampleImage(bench::sampleClasses(classes), code);
}

}  // namespace

int main(int count, char** arguments) {
  const std::string_view task = count > 1 ? arguments[1] : "";
  try {
    if (task == "write" && count == 5) {
      write(arguments[2], number(arguments[3]), number(arguments[4]));
    } else if (task == "walk" && count == 3) {
      walk(arguments[2]);
    } else if (task == "records" && count == 3) {
      readRecords(arguments[2]);
    } else {
      return 2;
    }
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
