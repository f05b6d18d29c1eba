#pragma once

#include <cstdint>
#include <string_view>

namespace tavlen {

/// Reading of JSON numbers as the platform's decoder does it: 1.0 and 1e2 are integers; from 2^53
/// on, an integer with a fraction or an exponent is read in decimal and its fraction dropped.
///
/// All three throw DecodingError::dataCorrupted for a malformed number and for one that is out of
/// the type's range.
std::int64_t int64FromJSONNumber(std::string_view token);
std::uint64_t uint64FromJSONNumber(std::string_view token);
double doubleFromJSONNumber(std::string_view token);

}  // namespace tavlen
