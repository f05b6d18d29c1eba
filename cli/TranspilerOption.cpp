#include "cli/TranspilerOption.h"

#include <CLI/CLI.hpp>

#include "cli/ArgumentChecks.h"
#include "tavlen/foundation/MainBundle.h"

namespace tavlen::cli {

void addTranspilerOption(CLI::App& command, std::string& folder) {
  command.add_option("--transpiler", folder, "The folder of another ob.js")
      ->type_name("DIR")
      ->check(notEmpty());
}

std::filesystem::path transpilerFolder(const std::string& folder) {
  return folder.empty() ? MainBundle::url() : std::filesystem::path(folder);
}

}  // namespace tavlen::cli
