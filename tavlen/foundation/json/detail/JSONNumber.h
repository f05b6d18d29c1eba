#pragma once

#include <cstdint>
#include <string_view>

namespace tavlen {

/// Reads a JSON number's text as the platform's decoder does: 1.0 and 1e2 are integers, and from
/// 2^53 on an integer with a fraction or an exponent is read in decimal, its fraction dropped.
///
/// Each throws DecodingError::dataCorrupted for a malformed number and for one that the type cannot
/// hold.
std::int64_t int64FromJSONNumber(std::string_view token);
std::uint64_t uint64FromJSONNumber(std::string_view token);
double doubleFromJSONNumber(std::string_view token);

}  // namespace tavlen
