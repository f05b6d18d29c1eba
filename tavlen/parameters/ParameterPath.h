#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

/// The way from a parameter to one inside it, one number for each level: of an array the index of
/// the item, of a dictionary twice the index of the pair, plus one for the pair's value. Empty for
/// the parameter itself.
using ParameterPath = std::vector<std::size_t>;

/// The same way in a stored document, from the box of `parameter`: ".items[2].value.items[0]". The
/// path must lead to a parameter.
TAVLEN_API std::string documentPath(const Parameter& parameter, const ParameterPath& path);

/// Calls `visit` for the parameter and for all inside it, from the outside inwards and in order.
/// The path is valid during the call.
TAVLEN_API void forEachParameter(
    const Parameter& parameter,
    const std::function<void(const Parameter& each, const ParameterPath& path)>& visit);

}  // namespace tavlen
