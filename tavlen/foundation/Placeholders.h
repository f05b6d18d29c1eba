#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tavlen {

/// `format` with its placeholders replaced by `arguments`, in one pass: what an argument holds is
/// never read again.
///
/// `%@`, `%d` and the other plain conversions take the next argument, `%1$@` the one of that
/// number, `%%` is a percent sign. A placeholder without an argument, and one that is none, stays
/// as it is written.
std::string fillPlaceholders(std::string_view format, std::span<const std::string> arguments);

}  // namespace tavlen
