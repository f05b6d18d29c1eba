#include "tavlen/foundation/text/StyledText.h"

#include <utility>

namespace tavlen {

void StyledText::append(std::string_view text, const Color& color) {
  append(Run{std::string(text), color, std::nullopt});
}

void StyledText::append(Run run) {
  if (run.text.empty()) return;
  if (!runs_.empty() && runs_.back().color == run.color && runs_.back().font == run.font) {
    runs_.back().text += run.text;
  } else {
    runs_.push_back(std::move(run));
  }
}

void StyledText::setFont(const Font& font) {
  for (Run& run : std::exchange(runs_, {})) {
    run.font = font;
    append(std::move(run));
  }
}

std::string StyledText::plain() const {
  std::string text;
  for (const Run& run : runs_) text += run.text;
  return text;
}

}  // namespace tavlen
