#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A report of the dump agent in an app to the process that asked for the dump: its progress and,
/// at the end, the path of the archive. Requests go the other way, in an environment variable of
/// the app.
struct TAVLEN_API TessaloopDatagram {
  /// The UDP port of the local host to which reports are sent.
  static constexpr std::uint16_t kPort = 5432;
  /// The environment variable with the image to dump: its full path or kMainImage.
  static constexpr std::string_view kImageVariable = "TESSALOOP_IMAGE";
  /// Means the app's main program.
  static constexpr std::string_view kMainImage = "TESSALOOP_MAIN";

  /// The longest path in a report, in bytes; a sender needs one of them for the NUL.
  static constexpr std::size_t kMostPathBytes = 1024;
  /// The longest report, in bytes.
  static constexpr std::size_t kMostBytes = sizeof(double) + kMostPathBytes;
  /// The value of the final report.
  static constexpr double kFinal = -1.0;

  /// The completed part, from 0 to 1, or kFinal. A hostile agent may send any double.
  double value = 0;
  /// In the final report, the path of the archive on the device; nothing when the agent has failed.
  std::optional<std::string> path;

  /// Whether this is the final report.
  bool isFinal() const { return value == kFinal; }

  /// Reads a datagram: a little-endian double and, in the final one, a text that ends at a NUL or
  /// after 1,024 bytes. Missing bytes count as zeros. A path that is empty or not UTF-8 counts as
  /// missing.
  static TessaloopDatagram read(std::string_view bytes);

  /// The bytes to send. Throws std::system_error (ENAMETOOLONG) for a path that does not fit with
  /// its NUL.
  std::string written() const;

  bool operator==(const TessaloopDatagram&) const = default;
};

}  // namespace tavlen
