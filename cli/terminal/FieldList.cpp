#include "cli/terminal/FieldList.h"

#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

void FieldList::add(const std::string& title, const std::string& value) {
  std::string line = title.empty() ? "" : title + ":";
  line.resize(width_, ' ');
  text_ += line + escapedForTerminal(value) + "\n";
}

void FieldList::addAll(const std::string& title, const std::vector<std::string>& values) {
  if (values.empty()) add(title, "none");
  for (std::size_t i = 0; i < values.size(); ++i) add(i == 0 ? title : "", values[i]);
}

}  // namespace tavlen::cli
