#include "cli/arguments/NamePattern.h"

#include <fnmatch.h>

namespace tavlen::cli {

bool NamePattern::matches(std::string_view name) const {
  return ::fnmatch(pattern.c_str(), std::string(name).c_str(), ignoresCase ? FNM_CASEFOLD : 0) == 0;
}

}  // namespace tavlen::cli
