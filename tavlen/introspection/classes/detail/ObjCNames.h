#pragma once

#include <string>
#include <string_view>

namespace tavlen {

/// The name that the run time shows for the class or protocol of the metadata's name `name`: "M.C"
/// for the two simple forms of names in Swift, "_TtC1M1C" and "_TtP1M1C_"; other names, those of
/// nested, private and generic types included, as they are. Malformed UTF-8 becomes U+FFFD.
std::string shownObjCName(std::string_view name);

}  // namespace tavlen
