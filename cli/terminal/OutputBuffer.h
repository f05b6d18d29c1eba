#pragma once

#include <string>
#include <string_view>

#include "cli/terminal/Console.h"

namespace tavlen::cli {

/// Text for the standard output that is printed in pieces, so that it may have any length. Throws
/// as printData().
class OutputBuffer {
 public:
  /// Adds `text`, unchanged.
  void append(std::string_view text) {
    constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
    pending_ += text;
    if (pending_.size() >= kPieceBytes) flush();
  }
  /// Prints what is left. To be called at the end.
  void flush() {
    printData(pending_);
    pending_.clear();
  }

 private:
  std::string pending_;
};

}  // namespace tavlen::cli
