#pragma once

#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Returns `format` with its placeholders replaced by `arguments`. One pass: a percent sign within
/// an argument is plain text.
///
/// `%@`, `%d`, `%ld` and the other conversions of C, without flags, width and precision, take the
/// next argument; `%2$@` takes the second; `%%` is a percent sign. All conversions do the same,
/// because arguments are finished texts. A placeholder without an argument stays as written, and so
/// does a percent sign that begins no placeholder. Without arguments, `format` is a plain text and
/// stays whole: "100%%" has two percent signs.
TAVLEN_API std::string fillPlaceholders(std::string_view format,
                                        std::span<const std::string> arguments);

}  // namespace tavlen
