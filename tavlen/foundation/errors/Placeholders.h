#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tavlen {

/// `format` with its placeholders replaced by `arguments`, in one pass: what an argument holds is
/// never read again.
///
/// `%@`, `%d`, `%ld` and the other conversions of C, without flags, width and precision, take the
/// next argument; `%2$@` takes the second; `%%` is a percent sign. Arguments are finished texts, so
/// the conversion's letter makes no difference. A placeholder without an argument stays as it is
/// written, and so does a percent sign that begins none.
std::string fillPlaceholders(std::string_view format, std::span<const std::string> arguments);

}  // namespace tavlen
