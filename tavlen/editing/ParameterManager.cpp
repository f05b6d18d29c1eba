#include "tavlen/editing/ParameterManager.h"

#include <utility>

namespace tavlen {

void ParameterManager::updateParameter(FunctionRef<void(Parameter&)> change) const {
  Parameter changed = parameter();
  change(changed);
  setParameter(std::move(changed));
}

}  // namespace tavlen
