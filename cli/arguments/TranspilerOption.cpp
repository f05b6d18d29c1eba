#include "cli/arguments/TranspilerOption.h"

#include "tavlen/foundation/errors/MainBundle.h"

namespace tavlen::cli {

void addTranspilerOption(Command command, std::string& folder) {
  command.text("--transpiler", folder, "The folder that contains another ob.js")
      .typeName("DIR")
      .notEmpty();
}

std::filesystem::path transpilerFolder(const std::string& folder) {
  return folder.empty() ? MainBundle::url() : std::filesystem::path(folder);
}

}  // namespace tavlen::cli
