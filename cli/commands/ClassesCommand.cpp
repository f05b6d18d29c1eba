#include <fnmatch.h>

#include <algorithm>
#include <memory>
#include <string>

#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "cli/work/ClassDump.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

struct Options {
  ImageArgument image;
  std::string pattern = "*";
  bool json = false;
};

int listClasses(const Options& options) {
  ClassParser::Classes classes = dumpClasses(options.image);
  const auto differs = [&](const std::shared_ptr<ObjCClass>& cls) {
    return ::fnmatch(options.pattern.c_str(), cls->name.str().c_str(), 0) != 0;
  };
  classes.erase(std::remove_if(classes.begin(), classes.end(), differs), classes.end());
  if (options.json) {
    printJSON(classes);
  } else {
    std::string out;
    for (const auto& cls : classes) out += escapedForTerminal(cls->description()) + "\n";
    printData(out);
  }
  return 0;
}

}  // namespace

void addClassesCommand(Command app) {
  Command command = app.addCommand("classes", "List the Objective-C classes of an image");
  const auto options = std::make_shared<Options>();
  addImageArgument(command, "IMAGE", options->image).image.required();
  command.text("--match", options->pattern, "Only classes whose name matches the shell pattern")
      .notEmpty()
      .typeName("PATTERN");
  command.flag("--json", options->json, "Print a JSON array of the classes, including methods");
  command.run([options] { return listClasses(*options); });
}

}  // namespace tavlen::cli
