#include "cli/terminal/FoldedText.h"

#include "cli/terminal/DisplayWidth.h"

namespace tavlen::cli {

std::string foldedText(std::string_view text, std::size_t indent, std::size_t columns) {
  std::string folded;
  std::size_t used = indent;
  while (!text.empty()) {
    const std::size_t end = text.find(' ');
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    const std::size_t width = displayWidth(word);
    if (used > indent && used + 1 + width > columns) {
      folded.append("\n").append(indent, ' ');
      used = indent;
    } else if (used > indent) {
      folded += ' ';
      ++used;
    }
    folded += word;
    used += width;
  }
  return folded + "\n";
}

}  // namespace tavlen::cli
