#include "cli/arguments/TweakArgument.h"

namespace tavlen::cli {

std::string OpenedTweak::pathOf(const std::string& name) const {
  return folder.empty() || folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace tavlen::cli
