#include "cli/work/DumpOutput.h"

#include <unistd.h>

#include <cstddef>
#include <tuple>
#include <utility>

#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen::cli {

namespace {

struct CategoryRow {
  SharedText className;
  SharedText name;
  ObjCClass::Methods methods;
  std::vector<SharedText> protocols;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("className", &CategoryRow::className),
                      requiredField("name", &CategoryRow::name),
                      requiredField("methods", &CategoryRow::methods),
                      requiredField("protocols", &CategoryRow::protocols)};
  }
};

struct ImageRow {
  std::string path;
  std::optional<std::string> architecture;
  ClassParser::Classes classes;
  std::vector<CategoryRow> categories;
  std::vector<std::string> diagnostics;
  std::optional<std::string> error;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("path", &ImageRow::path),
                      optionalField("architecture", &ImageRow::architecture),
                      requiredField("classes", &ImageRow::classes),
                      requiredField("categories", &ImageRow::categories),
                      requiredField("diagnostics", &ImageRow::diagnostics),
                      optionalField("error", &ImageRow::error)};
  }
};

struct DumpRow {
  std::vector<ImageRow> images;
  std::vector<std::string> diagnostics;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("images", &DumpRow::images),
                      requiredField("diagnostics", &DumpRow::diagnostics)};
  }
};

std::vector<std::string> wellFormed(std::vector<std::string> texts) {
  for (std::string& text : texts) text = wellFormedUTF8(text);
  return texts;
}

ImageRow rowOf(const ImageDump& image) {
  ImageRow row;
  row.path = wellFormedUTF8(image.path);
  row.architecture = image.architecture;
  row.classes = image.classes;
  for (const StaticClassParser::Category& category : image.categories) {
    row.categories.push_back(
        {category.className, category.name, category.methods, category.protocols});
  }
  row.diagnostics = wellFormed(image.diagnostics);
  if (image.error) row.error = wellFormedUTF8(*image.error);
  return row;
}

/// "1 class", "3,120 classes".
std::string counted(std::size_t count, const std::string& one, const std::string& many) {
  constexpr std::size_t kGroup = 3;
  std::string digits = std::to_string(count);
  for (std::size_t i = digits.size(); i > kGroup; i -= kGroup) digits.insert(i - kGroup, ",");
  return digits + " " + (count == 1 ? one : many);
}

}  // namespace

void printDump(const ClassDump& dump) {
  DumpRow row;
  for (const ImageDump& image : dump.images) row.images.push_back(rowOf(image));
  row.diagnostics = wellFormed(dump.faults);
  printJSON(row);
}

void printCounts(const ClassDump& dump) {
  if (::isatty(STDERR_FILENO) != 1) return;
  std::size_t classes = 0;
  std::size_t methods = 0;
  for (const ImageDump& image : dump.images) {
    classes += image.classes.size();
    for (const auto& cls : image.classes) methods += cls->methods.size();
    for (const auto& category : image.categories) methods += category.methods.size();
  }
  printMessage(counted(classes, "class", "classes") + ", " + counted(methods, "method", "methods") +
               " in " + counted(dump.images.size(), "image", "images") + "\n");
}

}  // namespace tavlen::cli
