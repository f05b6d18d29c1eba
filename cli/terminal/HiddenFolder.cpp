#include "cli/terminal/HiddenFolder.h"

#include <string>

#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen::cli {

HiddenFolder::HiddenFolder()
    : path_(makeUniqueTemporaryFolder(std::string(TemporaryDirectory::kItemsFolder) + "-")) {}

HiddenFolder::~HiddenFolder() { removeQuietly(path_); }

}  // namespace tavlen::cli
