#pragma once

#include <optional>
#include <string>
#include <tuple>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/store/BrokenItem.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen::cli {

/// What the command prints of an item, the same wherever it prints one, as JSON or in a list.
struct ItemRow {
  std::optional<std::string> name;      ///< nothing for a broken item, and for one not stored
  std::string kind;                     ///< "tweak" or "collection"
  std::optional<std::string> bundleID;  ///< of the app that it is for; nothing for a broken item
  std::optional<std::string> color;     ///< nothing where there is no name
  std::optional<std::string> glyph;     ///< "moon/solid"; nothing where there is no name
  bool isInstalled = false;             ///< whether it is the active one of its app
  /// Whether it lies in the store. What an app's record names need not.
  bool isStored = true;
  std::optional<std::string> id;     ///< nothing for a text and an archive
  std::optional<std::string> path;   ///< of its folder or document; nothing for one not stored
  std::optional<std::string> error;  ///< why it is broken
  std::optional<std::string> archive = {};          ///< of `export`: the file that it wrote
  std::optional<std::string> uninstalledFrom = {};  ///< of `delete`: the app

  static constexpr auto codedFields() {
    return std::tuple{optionalField("name", &ItemRow::name),
                      requiredField("kind", &ItemRow::kind),
                      optionalField("bundleID", &ItemRow::bundleID),
                      optionalField("color", &ItemRow::color),
                      optionalField("glyph", &ItemRow::glyph),
                      requiredField("installed", &ItemRow::isInstalled),
                      requiredField("stored", &ItemRow::isStored),
                      optionalField("identifier", &ItemRow::id),
                      optionalField("path", &ItemRow::path),
                      optionalField("error", &ItemRow::error),
                      optionalField("archive", &ItemRow::archive),
                      optionalField("uninstalledFrom", &ItemRow::uninstalledFrom)};
  }
};

/// The row of `item`, which has these settings. Reads the record of its app.
ItemRow rowOf(const TweakProtocol& item, const TweakConfiguration& configuration);
/// The same, where the active item of its app is known.
ItemRow rowOf(const TweakProtocol& item, const TweakConfiguration& configuration, bool isInstalled);
/// The row of a broken item.
ItemRow rowOf(const BrokenItem& broken, bool isInstalled);
/// The row of the item `id` that the record of the app `bundleID` names, but the store lacks.
ItemRow rowOfRecord(const std::string& id, const std::string& bundleID);
/// The row of the item `id`, stored or not, that the record of the app `bundleID` names.
ItemRow rowOfInstalled(const std::string& id, const std::string& bundleID);

/// Whether `item` lies in the store. The user may give any path.
bool isInStore(const TweakProtocol& item);

/// Prints the row of an opened item as JSON on a line of its own.
void printRow(const OpenedItem& item);

}  // namespace tavlen::cli
