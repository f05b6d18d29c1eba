#pragma once

#include <optional>
#include <string>
#include <tuple>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen::cli {

/// An item that an ambiguous name may mean, in a message for programs. The keys are those of an
/// ItemRow.
struct Candidate {
  std::optional<std::string> name;      ///< nothing for a broken item, as the next ones
  std::optional<std::string> bundleID;  ///< of the app that it is for
  std::optional<std::string> changed;   ///< when its document was, in local time
  bool isInstalled = false;
  std::string id;

  static constexpr auto codedFields() {
    return std::tuple{optionalField("name", &Candidate::name),
                      optionalField("bundleID", &Candidate::bundleID),
                      optionalField("changed", &Candidate::changed),
                      requiredField("installed", &Candidate::isInstalled),
                      requiredField("identifier", &Candidate::id)};
  }
};

}  // namespace tavlen::cli
