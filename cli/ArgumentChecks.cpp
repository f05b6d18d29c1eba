#include "cli/ArgumentChecks.h"

#include <string>

#include "tavlen/foundation/Unicode.h"

namespace tavlen::cli {

CLI::Validator notEmpty() {
  return CLI::Validator(
      [](std::string& text) { return std::string(text.empty() ? "it is empty" : ""); }, "");
}

CLI::Validator validUTF8() {
  return CLI::Validator(
      [](std::string& text) { return std::string(isValidUTF8(text) ? "" : "it is not UTF-8"); },
      "");
}

}  // namespace tavlen::cli
