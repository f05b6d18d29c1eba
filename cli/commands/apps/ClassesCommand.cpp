#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/NamePattern.h"
#include "cli/classes/ClassDump.h"
#include "cli/classes/DumpOutput.h"
#include "cli/classes/HeaderFiles.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/OutputBuffer.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

struct Options {
  ImageArgument image;
  NamePattern pattern;
  bool json = false;
  bool headers = false;
  std::string folder;
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

void writeHeadersOf(const ClassDump& dump, const std::string& folder) {
  ClassParser::Classes classes;
  std::vector<StaticClassParser::Category> categories;
  for (const ImageDump& image : dump.images) {
    classes.insert(classes.end(), image.classes.begin(), image.classes.end());
    categories.insert(categories.end(), image.categories.begin(), image.categories.end());
  }
  writeHeaders(classes, categories, folder);
}

int listClasses(const Options& options) {
  if (options.headers) requireHeaderFolder(options.folder);
  ClassDump dump = dumpClasses(options.image);
  keepMatching(dump, options.pattern);
  if (options.headers) {
    writeHeadersOf(dump, options.folder);
  } else if (options.json) {
    printDump(dump);
  } else {
    printLines(dump);
  }
  const bool hasFaults = reportFaults(dump, options.image);
  if (!options.headers) printCounts(dump);
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
  const Option json =
      command.flag("--json", options->json,
                   "Print a JSON object with the classes and categories of each image, including "
                   "methods");
  Option headers = command.flag("--headers", options->headers,
                                "Write an Objective-C header for each class into the folder DIR");
  const auto problem = [](const std::string& text) {
    return text == "-" ? "headers are files in a folder, not one stream" : "";
  };
  Option folder = command
                      .text("-o,--output", options->folder,
                            "The folder: a new or empty one, or one with the headers of an "
                            "earlier run, which are replaced")
                      .notEmpty()
                      .check(problem)
                      .typeName("DIR");
  headers.needs(folder).excludes(json);
  folder.needs(headers);
  command.flag("--strict", options->isStrict, "Fail if any part of the images cannot be read");
  command.run([options] { return listClasses(*options); });
}

}  // namespace tavlen::cli
