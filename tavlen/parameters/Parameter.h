#pragma once

#include <string>
#include <variant>

#include "tavlen/parameters/FileParameters.h"
#include "tavlen/parameters/RuntimeParameters.h"
#include "tavlen/parameters/ScalarParameters.h"

namespace tavlen {

struct ArrayParameter;
struct DictionaryParameter;

/// A typed constant that a hook puts in place of an argument or of a result. The order of the kinds
/// is that of their look-up in stored documents. Include ParameterContainer.h to use one: it
/// completes the kinds that nest.
///
/// Every kind offers its `typeName`, the `identifier` that is stored for it, and its coded fields.
using Parameter =
    std::variant<NilParameter, CodeParameter, ValueParameter<std::int64_t>,
                 ValueParameter<std::uint64_t>, ValueParameter<double>, ValueParameter<std::string>,
                 ValueParameter<bool>, URLParameter, DateParameter, ColorParameter, DataParameter,
                 ImageParameter, ClassParameter, SelectorParameter, ProtocolParameter,
                 ArrayParameter, DictionaryParameter>;

/// Appends the expression of `parameter`, of whichever kind, in the hook language.
///
/// Throws EncodingError for a value that is written as JSON and has no such form: a float that is
/// not finite, a text that is not UTF-8. The first value at fault in the order of writing is named,
/// of a dictionary the keys before the values; `out` holds a part of the expression then. Code is
/// not judged, and the numbers of dates and colours never fail: what is not finite is written "inf"
/// or "nan", and refused when it is stored.
void appendOBJSValue(std::string& out, const Parameter& parameter);
/// The expression of `parameter`, of whichever kind. Errors as appendOBJSValue()'s.
std::string objsValue(const Parameter& parameter);

}  // namespace tavlen
