#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A UTF-8 text in runs of one colour and font, for users of the library to draw. A plain value.
class TAVLEN_API StyledText {
 public:
  /// Components from 0 to 1; the range is not checked.
  struct Color {
    double red = 0;    ///< 1 is full red
    double green = 0;  ///< 1 is full green
    double blue = 0;   ///< 1 is full blue
    double alpha = 1;  ///< 0 is transparent

    bool operator==(const Color&) const = default;
  };

  /// A font by its name on the platform.
  struct Font {
    /// The name by which the platform finds it.
    std::string name;
    double size = 0;  ///< in points

    bool operator==(const Font&) const = default;
  };

  /// A stretch of text in one style. Never empty; adjacent runs differ in style.
  struct Run {
    /// UTF-8.
    std::string text;
    /// The colour; nothing for the default one.
    std::optional<Color> color;
    /// The font; nothing for the default one.
    std::optional<Font> font;

    bool operator==(const Run&) const = default;
  };

  /// Appends `text` in `color`, without a font.
  void append(std::string_view text, const Color& color);
  /// Sets the font of all runs; text appended later has none.
  void setFont(const Font& font);

  /// The runs, in order; valid until the next change.
  const std::vector<Run>& runs() const { return runs_; }
  /// The text without its styles.
  std::string plain() const;

  bool operator==(const StyledText&) const = default;

 private:
  void append(Run run);

  std::vector<Run> runs_;
};

}  // namespace tavlen
