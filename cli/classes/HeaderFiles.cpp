#include "cli/classes/HeaderFiles.h"

#include "cli/terminal/CountText.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/introspection/headers/ClassHeaders.h"

namespace tavlen::cli {

void writeHeaders(const ClassParser::Classes& classes,
                  const std::vector<StaticClassParser::Category>& categories,
                  const std::string& folder) {
  const ClassHeaders::Written written = ClassHeaders::write(classes, categories, folder);
  printCounts(countText(written.classes, "header of a class", "headers of classes") + " and " +
              countText(written.categories, "header of a category", "headers of categories") +
              " in " + escapedForTerminal(folder));
}

}  // namespace tavlen::cli
