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
  std::string className;
  ImageArgument image;
  bool json = false;
};

int listMethods(const Options& options) {
  const std::shared_ptr<ObjCClass> cls = dumpedClass(options.image, options.className);
  if (options.json) {
    printJSON(cls->methods);
  } else {
    std::string out;
    for (const auto& method : cls->methods) out += escapedForTerminal(method->description()) + "\n";
    printData(out);
  }
  return 0;
}

}  // namespace

void addMethodsCommand(Command app) {
  Command command = app.addCommand("methods", "List a class's methods, without inherited ones");
  const auto options = std::make_shared<Options>();
  command.text("CLASS", options->className, "The class's name").required().notEmpty();
  addImageArgument(command, "--in", options->image).image.required();
  command.flag("--json", options->json, "Print a JSON array");
  command.run([options] { return listMethods(*options); });
}

}  // namespace tavlen::cli
