#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// What the dump agent in an app tells whoever has asked for a dump: how far it is, and at the end
/// where the archive lies. The other direction is an environment variable of the app.
struct TessaloopDatagram {
  /// At this port of the local host reports are waited for, over UDP.
  static constexpr std::uint16_t kPort = 5432;
  /// Names the image to dump, by its full path or by kMainImage.
  static constexpr std::string_view kImageVariable = "TESSALOOP_IMAGE";
  /// Stands for the app's own program.
  static constexpr std::string_view kMainImage = "TESSALOOP_MAIN";

  static constexpr std::size_t kMostPathBytes = 1024;
  static constexpr std::size_t kMostBytes = sizeof(double) + kMostPathBytes;
  /// Marks the final datagram.
  static constexpr double kFinal = -1.0;

  /// How much is done, from 0 to 1, or kFinal. A hostile agent's is any double.
  double value = 0;
  /// The final one's: of the archive, as the device names it; nothing where the agent has failed.
  std::optional<std::string> path;

  bool isFinal() const { return value == kFinal; }

  /// What stands in a datagram: a double, the lowest byte first, then for the final one a text that
  /// a NUL or the 1,024th byte ends. What is missing counts as zeros; an empty path, and one that
  /// is not UTF-8, count as none.
  static TessaloopDatagram read(std::string_view bytes);

  /// The bytes to send. Throws std::system_error (ENAMETOOLONG) for a path that does not fit with
  /// its NUL.
  std::string written() const;

  bool operator==(const TessaloopDatagram&) const = default;
};

}  // namespace tavlen
