#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavlen::loader {

/// The name, in a script, of a member of the structure `structure` whose encoding has no names:
/// those of the platform's own structures (x and y of a CGPoint), and "field1", "field2", ... of
/// any other. `index` counts from 0.
std::string memberName(std::string_view structure, std::size_t index, std::size_t count);

}  // namespace tavlen::loader
