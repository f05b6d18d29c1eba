#pragma once

#include <string>

#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen::cli {

/// The help text of a parameter's value.
inline constexpr const char* kValueHelp =
    "The value: bool:true, int:-3, uint:7, double:0.5, string:TEXT, url:TEXT, "
    "date:2026-01-31T12:00:00Z, color:#ff000080, data:FILE, image:FILE, class:NAME, selector:NAME, "
    "protocol:NAME, nil, code:TEXT, or json: and a parameter in the form of manifests";

/// A parameter from the command line.
struct TypedValue {
  Parameter parameter;  ///< the parameter
  std::string file;     ///< the file to be imported as its resource; empty for other kinds
};

/// Reads a value in the form of kValueHelp. Reads no file. Throws UsageError, which names
/// `argument`.
TypedValue parseTypedValue(const std::string& text, const char* argument);

/// The parameter in the form that parseTypedValue() reads back, on one line: a short one, or
/// "json:" where no short one reads back to the same value. The files of data and images have the
/// names of resources.
std::string typedText(const Parameter& parameter);

}  // namespace tavlen::cli
