#include "cli/classes/HeaderFiles.h"

#include <stdexcept>

#include "cli/terminal/CountText.h"
#include "cli/terminal/NewFolder.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/introspection/headers/ClassHeaders.h"

namespace tavlen::cli {

void requireHeaderFolder(const std::filesystem::path& folder) {
  constexpr std::string_view kCommonFile = ClassHeaders::kCommonFile;
  if (!std::filesystem::is_directory(folder) || std::filesystem::is_empty(folder) ||
      isTaken(folder / kCommonFile))
    return;
  throw std::runtime_error(folder.string() + ": is not empty and has no " +
                           std::string(kCommonFile));
}

void writeHeaders(const ClassParser::Classes& classes,
                  const std::vector<StaticClassParser::Category>& categories,
                  const std::string& folder) {
  ClassHeaders::Written written;
  if (std::filesystem::is_directory(folder)) {
    written = ClassHeaders::write(classes, categories, folder);
  } else {
    makeFolder(folder, [&](const std::filesystem::path& draft) {
      written = ClassHeaders::write(classes, categories, draft);
    });
  }
  printCounts(countText(written.classes, "header of a class", "headers of classes") + " and " +
              countText(written.categories, "header of a category", "headers of categories") +
              " in " + escapedForTerminal(folder));
}

}  // namespace tavlen::cli
