#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <variant>

#include "tavlen/parameters/ClassParameter.h"
#include "tavlen/parameters/CodeParameter.h"
#include "tavlen/parameters/ColorParameter.h"
#include "tavlen/parameters/DataParameter.h"
#include "tavlen/parameters/DateParameter.h"
#include "tavlen/parameters/ImageParameter.h"
#include "tavlen/parameters/NilParameter.h"
#include "tavlen/parameters/ProtocolParameter.h"
#include "tavlen/parameters/SelectorParameter.h"
#include "tavlen/parameters/URLParameter.h"
#include "tavlen/parameters/ValueParameter.h"

namespace tavlen {

struct ArrayParameter;
struct DictionaryParameter;
struct ParameterContainer;

/// A typed constant that a hook puts in place of an argument or of a result. The order of the kinds
/// is that of their look-up in stored documents. Include ParameterContainer.h to use one: it
/// completes the kinds that nest.
using Parameter =
    std::variant<NilParameter, CodeParameter, ValueParameter<std::int64_t>,
                 ValueParameter<std::uint64_t>, ValueParameter<double>, ValueParameter<std::string>,
                 ValueParameter<bool>, URLParameter, DateParameter, ColorParameter, DataParameter,
                 ImageParameter, ClassParameter, SelectorParameter, ProtocolParameter,
                 ArrayParameter, DictionaryParameter>;

/// What every kind offers: its name, the identifier that is stored for it, its coded fields, and
/// its expression in the hook language, which throws EncodingError where a value has none.
template <class Kind>
concept ParameterKind = requires(const Kind& kind, std::string& out) {
  { Kind::typeName } -> std::convertible_to<std::string_view>;
  { Kind::identifier } -> std::convertible_to<std::string_view>;
  Kind::codedFields();
  kind.appendOBJSValue(out);
  { kind.objsValue() } -> std::same_as<std::string>;
};

/// Appends the expression of the kind that `parameter` holds. After an error, `out` holds a part of
/// it.
void appendOBJSValue(std::string& out, const Parameter& parameter);
/// The expression of the kind that `parameter` holds.
std::string objsValue(const Parameter& parameter);

}  // namespace tavlen
