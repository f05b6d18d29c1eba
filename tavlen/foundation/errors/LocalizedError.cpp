#include "tavlen/foundation/errors/LocalizedError.h"

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/errors/Placeholders.h"

namespace tavlen {

std::string LocalizedError::description() const {
  return fillPlaceholders(MainBundle::localizedString(text_), payload_);
}

}  // namespace tavlen
