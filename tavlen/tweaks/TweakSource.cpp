#include "tavlen/tweaks/TweakSource.h"

#include <algorithm>
#include <utility>

#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen {

TweakSource::TweakSource(std::span<const Hook> hooks, std::string_view script) {
  HookSource generated = generateHookSource(hooks);
  generated_ = generated.text.size();
  entries_ = std::move(generated.entries);
  text_ = TweakProcessor::assembled(std::move(generated.text), script);
  linesBeforeScript_ =
      lineEndCount(std::string_view(text_).substr(0, text_.size() - script.size()));
}

const HookSource::Entry* TweakSource::entryBefore(std::size_t offset) const {
  const auto after =
      std::upper_bound(entries_.begin(), entries_.end(), offset,
                       [](std::size_t place, const auto& entry) { return place < entry.begin; });
  return after == entries_.begin() ? nullptr : &*(after - 1);
}

std::optional<TweakSource::Place> TweakSource::placeAt(TextPosition position) const {
  const auto offset = offsetAt(text_, position);
  if (!offset) return std::nullopt;
  if (position.line > linesBeforeScript_)
    return TextPosition{position.line - linesBeforeScript_, position.column};
  const HookSource::Entry* entry = entryBefore(*offset);
  if (entry == nullptr || *offset >= entry->end) return std::nullopt;
  return HookPlace{entry->hook};
}

}  // namespace tavlen
