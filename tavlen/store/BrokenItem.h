#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakConfiguration.h"

namespace tavlen {

class TweakProtocol;

/// An item in the tweaks directory that cannot be opened, because its document is missing or
/// broken. The lists of items leave it out.
struct TAVLEN_API BrokenItem {
  std::shared_ptr<TweakProtocol> item;              ///< a handle; never null
  std::string error;                                ///< why it cannot be opened
  std::optional<TweakConfiguration> configuration;  ///< if that part of the document is intact
};

}  // namespace tavlen
