#pragma once

#include <string>
#include <variant>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextBuffer.h"
#include "tavlen/parameters/FileParameters.h"
#include "tavlen/parameters/RuntimeParameters.h"
#include "tavlen/parameters/ScalarParameters.h"

namespace tavlen {

struct ArrayParameter;
struct DictionaryParameter;

/// A typed constant with which a hook replaces an argument or a result. Stored documents are
/// matched against the kinds in this order. Include ParameterContainer.h to use a parameter: it
/// completes the types of the kinds that nest.
///
/// Every kind has a `typeName`, the `identifier` under which it is stored, and coded fields.
using Parameter =
    std::variant<NilParameter, CodeParameter, ValueParameter<std::int64_t>,
                 ValueParameter<std::uint64_t>, ValueParameter<double>, ValueParameter<std::string>,
                 ValueParameter<bool>, URLParameter, DateParameter, ColorParameter, DataParameter,
                 ImageParameter, ClassParameter, SelectorParameter, ProtocolParameter,
                 ArrayParameter, DictionaryParameter>;

/// Appends the expression of `parameter` in the hook language.
///
/// Throws EncodingError for a value that is written as JSON but has no JSON form: a float that is
/// not finite, or text that is not UTF-8. The error names the first such value in the order of
/// writing (a dictionary's keys come before its values), and `out` then holds a part of the
/// expression. Code is not checked. Dates and colours never fail: a number that is not finite is
/// written as "inf" or "nan" here, and only storing it throws.
TAVLEN_API void appendOBJSValue(TextBuffer& out, const Parameter& parameter);
/// The expression of `parameter` in the hook language. Throws as appendOBJSValue() does.
TAVLEN_API std::string objsValue(const Parameter& parameter);

}  // namespace tavlen
