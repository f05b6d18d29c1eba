#include "tavlen/introspection/types/JXTypeParse.h"

#include "tavlen/introspection/types/JXType.h"

namespace tavlen {

JXTypeParse::Level::Level(JXTypeParse& parse, std::size_t position)
    : parse_(parse), members_(parse.members.size()), names_(parse.names.size()) {
  if (parse.depth++ > 0) return;
  parse.begin = parse.furthest = position;
  parse.steps = parse.corrections = 0;
}

JXTypeParse::Level::~Level() {
  // Non-empty only after an exception.
  parse_.members.resize(members_);
  parse_.names.resize(names_);
  if (--parse_.depth == 0 && !parse_.readings.empty()) parse_.readings = {};
}

bool JXTypeParse::hasRoom() const {
  // The limit depends on the text read so far, not on the whole text: the text after a type must
  // not change how it is parsed.
  return depth < JXType::kMaximumDepth && steps <= kFreeSteps + kStepsPerByte * (furthest - begin);
}

}  // namespace tavlen
