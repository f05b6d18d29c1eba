#include "cli/ArgumentChecks.h"

#include <string>

namespace tavlen::cli {

CLI::Validator notEmpty() {
  return CLI::Validator(
      [](std::string& text) { return std::string(text.empty() ? "it is empty" : ""); }, "");
}

}  // namespace tavlen::cli
