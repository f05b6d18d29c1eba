#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavlen {

/// The name that the run time shows for a class or protocol with one of the two simple forms of
/// names in Swift: "M.C" for "_TtC1M1C" and "_TtP1M1C_". Nothing for other names, those of nested,
/// private and generic types included: the run time shows them as they are.
std::optional<std::string> shownSwiftName(std::string_view name);

}  // namespace tavlen
