#include "tavlen/tweaks/OverrideCheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <variant>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

struct Fault {
  std::string_view code;
  std::string text;
};

Fault malformed(std::string text) { return {"malformed-override", std::move(text)}; }

bool consistsOf(std::string_view text, bool (*isAllowed)(char)) {
  return std::all_of(text.begin(), text.end(), isAllowed);
}

/// Whether `text` consists of numbers with full stops between them.
bool isDotted(std::string_view text) {
  return consistsOf(text, [](char c) { return isDigit(c) || c == '.'; }) &&
         !text.starts_with('.') && !text.ends_with('.') &&
         text.find("..") == std::string_view::npos;
}

/// Finds the fault of one override.
struct FaultFinder {
  std::string title;  ///< the kind's name

  template <class Kind>
  std::optional<Fault> operator()(const OverrideOfKind<Kind>& override_) const {
    return faultOf<Kind>(override_.value);
  }

 private:
  template <class Kind>
  std::optional<Fault> faultOf(const std::string& text) const {
    if (text.empty()) return Fault{"empty-override", title + " is empty"};
    if constexpr (std::is_same_v<Kind, BundleIDKind>) {
      const bool isValid = consistsOf(
          text, [](char c) { return isDigit(c) || isLetter(c) || c == '.' || c == '-'; });
      if (!isValid)
        return malformed("\"" + text +
                         "\" is no bundle identifier: it has letters, digits, "
                         "hyphens and full stops only");
    } else if constexpr (std::is_same_v<Kind, VersionKind>) {
      if (!isDotted(text)) return malformed("\"" + text + R"(" is no version such as "1.2.3")");
    } else if constexpr (std::is_same_v<Kind, BuildKind>) {
      const bool isValid =
          consistsOf(text, [](char c) { return isDigit(c) || isLetter(c) || c == '.'; });
      if (!isValid)
        return malformed("\"" + text +
                         "\" is no build number: it has letters, digits and full "
                         "stops only");
    }
    return std::nullopt;
  }

  template <class Kind>
  std::optional<Fault> faultOf(const std::vector<InterfaceOrientation>& orientations) const {
    for (auto each = orientations.begin(); each != orientations.end(); ++each) {
      if (std::find(orientations.begin(), each, *each) != each)
        return malformed("names the orientation " + std::string(shortName(*each)) + " twice");
    }
    return std::nullopt;
  }

  // A Boolean, or a version that was parsed; one that is absent removes the requirement.
  template <class Kind>
  static std::optional<Fault> faultOf(bool /*value*/) {
    return std::nullopt;
  }
  template <class Kind>
  static std::optional<Fault> faultOf(const std::optional<SemanticVersion>& /*value*/) {
    return std::nullopt;
  }
};

}  // namespace

std::vector<OverrideProblem> problemsOf(const std::vector<OverrideContainer>& overrides) {
  std::array<std::size_t, std::variant_size_v<Override>> last{};
  for (std::size_t i = 0; i < overrides.size(); ++i) last[overrides[i].value.index()] = i;
  std::vector<OverrideProblem> problems;
  for (std::size_t i = 0; i < overrides.size(); ++i) {
    const std::string kind(overrides[i].identifier());
    if (last[overrides[i].value.index()] != i) {
      problems.push_back({i, "repeated-override",
                          kind + " is overridden again further down, and only the last counts"});
    }
    if (auto fault = std::visit(FaultFinder{kind}, overrides[i].value))
      problems.push_back({i, fault->code, std::move(fault->text)});
  }
  return problems;
}

}  // namespace tavlen
