#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A text whose stretches have a colour and a font, for users of the library to draw. UTF-8.
class StyledText {
 public:
  /// Each component lies from 0 to 1, which nothing here enforces.
  struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const Color&) const = default;
  };

  /// As the platform knows it.
  struct Font {
    std::string name;
    double size = 0;  ///< in points

    bool operator==(const Font&) const = default;
  };

  /// A stretch of one style. Never empty; neighbours differ in style.
  struct Run {
    std::string text;
    std::optional<Color> color;
    std::optional<Font> font;

    bool operator==(const Run&) const = default;
  };

  /// Puts `text` behind what is there, in `color` and without a font.
  void append(std::string_view text, const Color& color);
  /// Over the whole length; what is appended later has none.
  void setFont(const Font& font);

  const std::vector<Run>& runs() const { return runs_; }
  /// The text alone.
  std::string plain() const;

  bool operator==(const StyledText&) const = default;

 private:
  void append(Run run);

  std::vector<Run> runs_;
};

}  // namespace tavlen
