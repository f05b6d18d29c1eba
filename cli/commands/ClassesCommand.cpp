#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/NamePattern.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/OutputBuffer.h"
#include "cli/work/ClassDump.h"
#include "cli/work/DumpOutput.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

struct Options {
  ImageArgument image;
  NamePattern pattern;
  bool json = false;
  bool isStrict = false;
};

void keepMatching(ClassDump& dump, const NamePattern& pattern) {
  for (ImageDump& image : dump.images) {
    std::erase_if(image.classes, [&](const auto& cls) { return !pattern.matches(cls->name); });
    std::erase_if(image.categories,
                  [&](const auto& category) { return !pattern.matches(category.className); });
  }
}

void printLines(const ClassDump& dump) {
  OutputBuffer out;
  for (const ImageDump& image : dump.images) {
    const std::string place =
        dump.images.size() == 1 ? "\n" : "\t" + escapedForTerminal(image.path) + "\n";
    for (const auto& cls : image.classes) {
      out.append(escapedForTerminal(cls->description()) + place);
    }
  }
  out.flush();
}

int listClasses(const Options& options) {
  ClassDump dump = dumpClasses(options.image);
  keepMatching(dump, options.pattern);
  options.json ? printDump(dump) : printLines(dump);
  const bool hasFaults = reportFaults(dump, options.image);
  printCounts(dump);
  return hasFaults && options.isStrict ? 1 : 0;
}

}  // namespace

void addClassesCommand(Command app) {
  Command command =
      app.addCommand("classes", "List the Objective-C classes of an image, or of all of an app's");
  const auto options = std::make_shared<Options>();
  addImageArgument(command, "IMAGE", options->image).image.required();
  command
      .text("--match", options->pattern.pattern,
            "Only classes whose name matches the shell pattern")
      .notEmpty()
      .typeName("PATTERN");
  command.flag("--ignore-case", options->pattern.ignoresCase, "Let the pattern ignore case");
  command.flag("--json", options->json,
               "Print a JSON object with the classes and categories of each image, including "
               "methods");
  command.flag("--strict", options->isStrict, "Fail if any part of the images cannot be read");
  command.run([options] { return listClasses(*options); });
}

}  // namespace tavlen::cli
