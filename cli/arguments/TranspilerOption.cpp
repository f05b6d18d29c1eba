#include "cli/arguments/TranspilerOption.h"

#include <stdexcept>
#include <string>
#include <system_error>

#include "cli/terminal/PlacedError.h"
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
  const std::string script = (container / "ob.js").string();
  const auto failure = [&](const std::exception& error) {
    return fileError(script, error, "transpiler-failed");
  };
  try {
    if (TweakProcessor::isTranspiler(container)) return container;
  } catch (const std::system_error& error) {
    throw failure(error);
  }
  throw failure(std::runtime_error("does not define OBJSTranspiler"));
}

}  // namespace tavlen::cli
