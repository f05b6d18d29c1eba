#pragma once

#include <string>
#include <string_view>

namespace tavlen::cli {

/// A shell pattern that a whole name must fit. A plain value.
struct NamePattern {
  std::string pattern = "*";
  bool ignoresCase = false;

  /// Whether `name` fits.
  bool matches(std::string_view name) const;
};

}  // namespace tavlen::cli
