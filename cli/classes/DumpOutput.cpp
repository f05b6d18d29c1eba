#include "cli/classes/DumpOutput.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "cli/terminal/CountText.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace cli {

namespace {

/// A dump as `--json` prints it.
struct DumpRow {
  const ClassDump& dump;
};

/// Writes the records directly: an app may have some hundred thousand of them.
class DumpEncoder {
 public:
  explicit DumpEncoder(Encoder& encoder) : encoder_(encoder) {}

  void write(const ClassDump& dump) {
    record([&] {
      list("images", dump.images, [&](const ImageDump& image) { write(image); });
      texts("diagnostics", dump.faults);
    });
  }

 private:
  void record(auto members) {
    encoder_.beginRecord();
    members();
    encoder_.endRecord();
  }

  void list(std::string_view key, const auto& elements, auto write) {
    encoder_.key(key);
    encoder_.beginArray(elements.size());
    for (const auto& element : elements) write(element);
    encoder_.endArray();
  }

  void text(std::string_view key, std::string_view value) {
    encoder_.key(key);
    encoder_.string(value);
  }
  void optionalText(std::string_view key, const std::optional<SharedText>& value) {
    if (value) text(key, std::string_view(*value));
  }

  /// Names of files may be any bytes.
  void texts(std::string_view key, const std::vector<std::string>& values) {
    list(key, values, [&](const std::string& each) { encoder_.string(wellFormedUTF8(each)); });
  }
  void texts(std::string_view key, const std::vector<SharedText>& values) {
    list(key, values, [&](std::string_view each) { encoder_.string(each); });
  }

  void write(const ImageDump& image) {
    record([&] {
      text("path", wellFormedUTF8(image.path));
      if (image.architecture) text("architecture", *image.architecture);
      list("classes", image.classes, [&](const auto& cls) { write(*cls); });
      list("categories", image.categories, [&](const auto& category) { write(category); });
      texts("diagnostics", image.diagnostics);
      if (image.error) text("error", wellFormedUTF8(*image.error));
    });
  }

  void write(const ObjCClass& cls) {
    record([&] {
      text("name", std::string_view(cls.name));
      optionalText("superclass", cls.supercls);
      optionalText("superclassPath", cls.superclassPath);
      optionalText("mangledSuperclass", cls.mangledSuperclass);
      texts("protocols", cls.protocols);
      write(cls.name, cls.methods);
    });
  }

  void write(const StaticClassParser::Category& category) {
    record([&] {
      text("class", std::string_view(category.className));
      text("name", std::string_view(category.name));
      texts("protocols", category.protocols);
      write(category.className, category.methods);
    });
  }

  void write(std::string_view className, const ObjCClass::Methods& methods) {
    list("methods", methods, [&](const auto& method) {
      record([&] {
        text("method",
             methodText({std::string(className), method->selector.str(), method->isClassMethod}));
        text("selector", std::string_view(method->selector));
        text("signature", std::string_view(method->encoding));
      });
    });
  }

  Encoder& encoder_;
};

}  // namespace

}  // namespace cli

template <>
struct Coding<cli::DumpRow> {
  static void encode(Encoder& encoder, const cli::DumpRow& row) {
    cli::DumpEncoder(encoder).write(row.dump);
  }
};

namespace cli {

void printDump(const ClassDump& dump) { printJSON(DumpRow{dump}); }

void printCounts(const ClassDump& dump) {
  std::size_t classes = 0;
  std::size_t methods = 0;
  for (const ImageDump& image : dump.images) {
    classes += image.classes.size();
    for (const auto& cls : image.classes) methods += cls->methods.size();
    for (const auto& category : image.categories) methods += category.methods.size();
  }
  printCounts(countText(classes, "class", "classes") + ", " +
              countText(methods, "method", "methods") + " in " +
              countText(dump.images.size(), "image", "images"));
}

}  // namespace cli

}  // namespace tavlen
