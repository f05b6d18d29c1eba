#pragma once

#include <string>

#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen::cli {

inline constexpr const char* kValueHelp =
    "The value: bool:true, int:-3, uint:7, double:0.5, string:TEXT, url:TEXT, "
    "date:2026-01-31T12:00:00Z, color:#ff000080, data:FILE, image:FILE, class:NAME, selector:NAME, "
    "protocol:NAME, nil, code:TEXT, or json: and a parameter as manifests hold it";

/// A parameter as it is written on a command line.
struct TypedValue {
  Parameter parameter;
  /// The file that is to become the parameter's resource; empty where there is none.
  std::string file;
};

/// Reads what kValueHelp says; `argument` is what errors call it. Reads no file. Throws
/// UsageError.
TypedValue parseTypedValue(const std::string& text, const char* argument);

/// The text that parseTypedValue() reads back to `parameter`, except that files are named as
/// resources.
std::string typedText(const Parameter& parameter);

}  // namespace tavlen::cli
