#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cli/classes/DumpOutput.h"
#include "cli/classes/MethodSearch.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/OutputBuffer.h"
#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

struct Options {
  MethodQuery query;
  ImageArgument image;
  bool ignoresCase = false;
  bool showsWholeTypes = false;
  bool json = false;
  bool isStrict = false;

  /// The only class whose records are needed: superclasses have other names.
  std::optional<std::string> neededClass() const {
    return query.withInherited ? std::nullopt : query.className;
  }
};

/// Appends a line for each method: the method as `hook add` takes it, its declaration, and the
/// image if there are several.
class Lines {
 public:
  Lines(const Options& options, bool hasOneImage) : options_(options), hasOneImage_(hasOneImage) {}

  void append(const ImageDump& image, std::string_view className,
              const ObjCClass::Methods& methods) {
    const auto bodies = options_.showsWholeTypes ? JXTypeBodies::all : JXTypeBodies::unnamed;
    for (const auto& method : methods) {
      const MethodIdentity identity = {std::string(className), method->selector.str(),
                                       method->isClassMethod};
      out_.append(escapedForTerminal(methodText(identity)) + "\t" +
                  escapedForTerminal(method->plainDeclaration(bodies)));
      if (!hasOneImage_) out_.append("\t" + escapedForTerminal(image.path));
      out_.append("\n");
    }
  }
  void flush() { out_.flush(); }

 private:
  const Options& options_;
  bool hasOneImage_;
  OutputBuffer out_;
};

void printLines(const ClassDump& found, const Options& options) {
  Lines lines(options, found.images.size() == 1);
  for (const ImageDump& image : found.images) {
    for (const auto& cls : image.classes) lines.append(image, cls->name, cls->methods);
    for (const auto& category : image.categories) {
      lines.append(image, category.className, category.methods);
    }
  }
  lines.flush();
}

int listMethods(Options options) {
  options.query.classes.ignoresCase = options.query.selectors.ignoresCase = options.ignoresCase;
  const ClassDump dump = dumpClasses(options.image, options.neededClass());
  if (options.query.className && !hasClass(dump, *options.query.className)) {
    reportFaults(dump, options.image);
    throw std::runtime_error(options.image.shown() + ": " +
                             missingClassText(dump, *options.query.className));
  }
  const ClassDump found = methodsFound(dump, options.query);
  options.json ? printDump(found) : printLines(found, options);
  const bool hasFaults = reportFaults(found, options.image);
  printCounts(found);
  return hasFaults && options.isStrict ? 1 : 0;
}

}  // namespace

void addMethodsCommand(Command app) {
  Command command =
      app.addCommand("methods", "List the methods of a class, or search all classes of an app");
  const auto options = std::make_shared<Options>();
  const Option one =
      command.text("CLASS", options->query.className, "The only class to list").notEmpty();
  addImageArgument(command, "--in", options->image).image.required();
  command
      .text("--class", options->query.classes.pattern,
            "Only classes whose name matches the shell pattern")
      .notEmpty()
      .typeName("PATTERN")
      .excludes(one);
  command
      .text("--match", options->query.selectors.pattern,
            "Only methods whose selector matches the shell pattern")
      .notEmpty()
      .typeName("PATTERN");
  command.flag("--ignore-case", options->ignoresCase, "Let the patterns ignore case");
  command.flag("--inherited", options->query.withInherited,
               "Also list the methods of superclasses in the images, unless they are overridden; "
               "each as a method of the superclass, which a hook of it changes for all subclasses");
  command.flag("--types", options->showsWholeTypes,
               "Show the members of structs and unions that have a name");
  command.flag(
      "--json", options->json,
      "Print a JSON object in the form of classes --json, with the methods that are listed");
  command.flag("--strict", options->isStrict, "Fail if any part of the images cannot be read");
  command.run([options] { return listMethods(*options); });
}

}  // namespace tavlen::cli
