#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tavlen/store/OpenedItem.h"

namespace tavlen::cli {

/// The names of the stored items. New names must differ from them, because items go by their names.
/// Valid as long as a StoreLock of the store is held.
class ItemNames {
 public:
  /// Reads the settings of all stored items except `except`, whose name may stay as it is.
  explicit ItemNames(std::string_view except = {});

  /// Throws std::runtime_error, which names the other item, if `name` is taken. Warns of a name
  /// that would be read as a path.
  void requireFree(const std::string& name) const;
  /// `name` itself if it is free. Otherwise the first free one of "name 2", "name 3" and so on, and
  /// prints a note that says so. It is taken from then on.
  std::string take(const std::string& name);
  /// Gives the new item `item` the name that take() returns for its own. Posts nothing. Throws as
  /// TweakFile::updateManifest() does.
  void takeFor(TweakProtocol& item);

 private:
  std::map<std::string, std::string> owners_;  ///< identifiers by name
};

/// Throws as ItemNames::requireFree() does if the item cannot be called `name`. It may keep its
/// name, and items outside the store may have any.
void requireNameFor(const OpenedItem& opened, const std::string& name);

}  // namespace tavlen::cli
