// Dumps the classes of an image and prints the numbers of classes, methods and bytes of text.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

#include "tavlen/foundation/text/Log.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"

namespace {

std::size_t sizeOf(const tavlen::ObjCClass& cls) {
  std::size_t bytes =
      cls.name.size() + cls.supercls.value_or("").size() + cls.superclassPath.value_or("").size();
  for (const auto& each : cls.protocols) bytes += each.size();
  for (const auto& each : cls.methods) bytes += each->selector.size() + each->encoding.size();
  return bytes;
}

void dump(const char* image) {
  const auto classes = tavlen::DynamicClassParser::sharedParser().parseClassesAtPath(image, true);
  std::size_t methods = 0;
  std::size_t bytes = 0;
  for (const auto& each : classes.value()) {
    methods += each->methods.size();
    bytes += sizeOf(*each);
  }
  std::cout << classes->size() << ' ' << methods << ' ' << bytes << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  tavlen::setLogSink([](std::string_view) {});
  try {
    dump(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
