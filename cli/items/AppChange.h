#pragma once

#include <string>

#include "tavlen/store/OpenedItem.h"

/// What follows from another app of an item.
namespace tavlen::cli {

/// Uninstalls an item from its app, if it is the active one there, because it gets the app `next`.
/// Prints a note that says so. To be called without a StoreLock: it runs the file-operations
/// helper. Throws as setActiveTweak() does.
void takeAway(const OpenedItem& item, const std::string& next);

/// Warns of the collections that contain the tweak `id` and are for another app than `bundleID`,
/// for which the tweak is now.
void warnOfCollections(const std::string& id, const std::string& bundleID);

}  // namespace tavlen::cli
