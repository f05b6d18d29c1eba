#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/arguments/TweakArgument.h"
#include "cli/items/ItemRow.h"
#include "tavlen/store/OpenedItem.h"

/// Items for commands that change nothing, and therefore take more than openedItem() does: a text
/// and an archive, too (see formOf()). Such an item is unpacked or written into a
/// temporary folder.
namespace tavlen::cli {

/// The help text of an argument for a tweak that is only read.
inline constexpr const char* kReadTweakHelp =
    "The tweak: its identifier or the beginning of that, its name, or the path of its folder, "
    "document, text (tweak.toml) or archive; - for a text on the standard input";

/// The same for a tweak or a collection.
inline constexpr const char* kReadItemHelp =
    "The tweak or collection: its identifier or the beginning of that, its name, or its path; of a "
    "tweak also the path of its text (tweak.toml) or archive, or - for a text on the standard "
    "input";

/// Opens a tweak, but not its script. Prints errors of a text with their places. Throws as
/// openedTweak() does, and ReportedError for such errors.
OpenedTweak tweakForReading(const std::string& argument);

/// As tweakForReading(), and reads the script. Throws std::runtime_error whose message begins with
/// the invalid file.
OpenedTweak openTweak(const std::string& argument);

/// An item in any form.
struct ItemForReading {
  OpenedItem item;
  std::string path;  ///< as the user wrote it, or that of the stored item
  std::shared_ptr<const void> temporaryFolder;   ///< see OpenedTweak
  std::shared_ptr<const TextInput> text = {};    ///< see OpenedTweak
  std::vector<TweakFile::Opened> archived = {};  ///< the members in the archive of a collection

  /// Whether it is an item, rather than a text or an archive, which has no identifier.
  bool isItem() const { return temporaryFolder == nullptr; }
  /// The members of a collection that can be opened, each once; none of a tweak.
  std::vector<TweakFile::Opened> members() const;
};

/// As tweakForReading(), also for collections: stored ones in the form of openedItem(), and
/// archives.
ItemForReading itemForReading(const std::string& argument);

/// As itemForReading(), but throws std::runtime_error for a tweak.
ItemForReading collectionForReading(const std::string& argument);

/// The row of the item, under the path as the user wrote it. A text and an archive have no
/// identifier and are not stored.
ItemRow rowOf(const ItemForReading& read);

}  // namespace tavlen::cli
