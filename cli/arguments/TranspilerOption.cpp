#include "cli/arguments/TranspilerOption.h"

#include <stdexcept>

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::cli {

void addTranspilerOption(Command command, std::string& folder) {
  command.text("--transpiler", folder, "The folder that contains another ob.js")
      .typeName("DIR")
      .notEmpty();
}

std::filesystem::path transpilerFolder(const std::string& folder) {
  if (folder.empty()) return MainBundle::url();
  std::filesystem::path container = folder;
  if (!TweakProcessor::isTranspiler(container))
    throw std::runtime_error((container / "ob.js").string() + ": does not define OBJSTranspiler");
  return container;
}

}  // namespace tavlen::cli
