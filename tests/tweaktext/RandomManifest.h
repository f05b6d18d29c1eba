#pragma once

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// Makes manifests of everything that a text could get wrong, the same ones for the same seed.
class RandomManifest {
 public:
  explicit RandomManifest(unsigned seed) : random_(seed) {}

  TweakFile::Manifest next() {
    TweakFile::Manifest manifest;
    manifest.configuration = {"N" + text(), TweakColor(below(10)), "a" + text(), {}};
    if (below(2) == 0) manifest.configuration._glyph = glyph();
    const bool isPlain = below(2) == 0;  // with no kind twice
    for (std::size_t i = 0; i < (isPlain ? 9 : below(6)); ++i)
      manifest._overrides.push_back(override_(isPlain ? i : below(9)));
    for (std::size_t i = below(4); i > 0; --i) manifest._hooks.emplace_back(hook());
    return manifest;
  }

 private:
  std::size_t below(std::size_t count) { return random_() % count; }

  template <std::size_t kSize, class Value>
  const Value& oneOf(const Value (&values)[kSize]) {
    return values[below(kSize)];
  }

  std::string text() {
    static const std::string kPieces[] = {"a",
                                          "B c",
                                          "$",
                                          "$int",
                                          "\"",
                                          "\"\"\"",
                                          "'''",
                                          "\\",
                                          "\n",
                                          "\r",
                                          " \n",
                                          "\t",
                                          ".",
                                          "#",
                                          "=",
                                          "[",
                                          "{",
                                          std::string(1, '\0'),
                                          "\x7F",
                                          "\xC2\x85",
                                          "\xEF\xBB\xBF",
                                          "\xE2\x80\xAE",
                                          "\xF0\x9F\x98\x80",
                                          "UIInterfaceOrientation",
                                          "/",
                                          std::string(90, 'x')};
    std::string result;
    for (std::size_t i = below(4); i > 0; --i) result += oneOf(kPieces);
    return result;
  }

  std::int64_t integer() {
    using Limits = std::numeric_limits<std::int64_t>;
    static const std::int64_t kValues[] = {
        0, 1, -1, 255, (1LL << 53) + 1, Limits::max(), Limits::max() - 1, Limits::min()};
    return oneOf(kValues);
  }

  double real() {
    using Limits = std::numeric_limits<double>;
    static const double kValues[] = {0,     -0.0, 1,    0.1,       -0.1,    1e22,         5e-324,
                                     1e300, -1.5, 1e10, 1e9 + 0.1, -6.3e10, Limits::max()};
    if (below(4) != 0) return oneOf(kValues);
    const auto any = std::bit_cast<double>((std::uint64_t{random_()} << 32) | random_());
    return std::isfinite(any) ? any : 0;
  }

  double component() { return below(3) == 0 ? real() : static_cast<double>(below(256)) / 255; }

  TweakGlyph glyph() {
    static const TweakGlyph kKnown[] = {
        {"moon", "solid"}, {"moon", "regular"}, {"apple", "brands"}, {"apple", "solid"}};
    return below(2) == 0 ? oneOf(kKnown) : TweakGlyph{text(), text()};
  }

  OverrideContainer override_(std::size_t kind) {
    OverrideContainer result = OverrideContainer::emptyOfKind(kind);
    std::visit([this](auto& each) { fill(each.value); }, result.value);
    return result;
  }
  void fill(std::string& value) { value = text(); }
  void fill(bool& value) { value = below(2) == 0; }
  void fill(std::optional<SemanticVersion>& value) {
    static const char* const kVersions[] = {"14", "014.0", "1.2.3-beta.1+5", ""};
    value = SemanticVersion::parse(oneOf(kVersions));
  }
  void fill(std::vector<InterfaceOrientation>& value) {
    for (std::size_t i = below(4); i > 0; --i) value.push_back(InterfaceOrientation(below(4)));
  }

  BoxedOptional<Hook> hook() {
    static const std::string kSignatures[] = {"v40@0:8Q16d24B32", "d24@0:8C16", "@24@0:8f16", "?",
                                              "{CGRect=dd}16@0:8"};
    static const std::string kNames[] = {"NoteList", "A<B c>", "a:b:", "x]", "_"};
    Hook hook;
    hook.className = below(3) == 0 ? text() : oneOf(kNames);
    hook.selector = below(3) == 0 ? text() : oneOf(kNames);
    hook.signature = below(4) == 0 ? text() : oneOf(kSignatures);
    hook.isClassMethod = below(2) == 0;
    if (below(3) == 0) hook.customName = text();
    for (std::size_t i = below(5); i > 0; --i) {
      const std::int64_t index = static_cast<std::int64_t>(below(5)) - 1;
      hook._args[below(8) == 0 ? integer() : index].value = parameter(0);
    }
    return hook;
  }

  Parameter parameter(std::size_t depth) {
    switch (below(depth < 4 ? 20 : 15)) {
      case 0:
        return NilParameter{};
      case 1:
        return CodeParameter{text()};
      case 2:
        return ValueParameter<std::int64_t>{integer()};
      case 3:
        return ValueParameter<std::uint64_t>{static_cast<std::uint64_t>(integer())};
      case 4:
        return ValueParameter<double>{real()};
      case 5:
        return ValueParameter<bool>{below(2) == 0};
      case 6:
        return URLParameter{text()};
      case 7:
        return DateParameter{{real()}};
      case 8:
        return ColorParameter{component(), component(), component(), component()};
      case 9:
        return DataParameter{text()};
      case 10:
        return ImageParameter{text()};
      case 11:
        return ClassParameter{text()};
      case 12:
        return SelectorParameter{text()};
      case 13:
        return ProtocolParameter{text()};
      case 14:
        return ValueParameter<std::string>{text()};
      case 15:
      case 16:
        return array(depth + 1);
      default:
        return dictionary(depth + 1);
    }
  }

  ArrayParameter array(std::size_t depth) {
    ArrayParameter result;
    for (std::size_t i = below(5); i > 0; --i) result._items.push_back({parameter(depth)});
    return result;
  }

  DictionaryParameter dictionary(std::size_t depth) {
    DictionaryParameter result;
    const bool hasTexts = below(3) > 0;
    for (std::size_t i = below(4); i > 0; --i) {
      Parameter key = hasTexts ? ValueParameter<std::string>{text()} : parameter(depth);
      result._items.push_back(DictionaryParameter::Pair::with(std::move(key), parameter(depth)));
    }
    return result;
  }

  std::mt19937 random_;
};

}  // namespace tavlen
