#include "cli/tweaks/TemporaryTweak.h"

#include <string>

#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen::cli {

TemporaryTweak::TemporaryTweak()
    : path_(makeUniqueTemporaryFolder(std::string(TemporaryDirectory::kItemsFolder) + "-")) {}

TemporaryTweak::~TemporaryTweak() { removeQuietly(path_); }

}  // namespace tavlen::cli
