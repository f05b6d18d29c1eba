#include "cli/TweakArgument.h"

#include <stdexcept>

#include "cli/Console.h"
#include "tavlen/foundation/CodingError.h"

namespace tavlen::cli {

namespace {

std::string joined(const std::string& folder, const std::string& name) {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace

std::string OpenedTweak::pathOf(const std::string& name) const { return joined(argument, name); }

OpenedTweak openTweak(const std::string& argument) {
  OpenedTweak tweak;
  tweak.argument = argument;
  try {
    tweak.file = TweakFile::at(argument);
    tweak.manifest = tweak.file->manifest();
  } catch (const TweakFile::Error& error) {
    throw std::runtime_error(argument + ": " + error.description());
  } catch (const DecodingError& error) {
    throw std::runtime_error(tweak.pathOf("Manifest.json") + ": " + error.description());
  }
  try {
    tweak.script = tweak.file->readScript().value_or(std::string());
  } catch (const std::exception& error) {
    tweak.scriptIsUnreadable = true;
    printWarning("the script cannot be read and counts as empty: " + std::string(error.what()));
  }
  return tweak;
}

}  // namespace tavlen::cli
