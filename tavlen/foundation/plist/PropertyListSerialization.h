#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// The two stored forms of property lists.
enum class PropertyListFormat { binary, xml };

/// The form that the first bytes show; nothing for other files.
TAVLEN_API std::optional<PropertyListFormat> propertyListFormatOf(std::string_view bytes);

/// Reads a list, whose form follows from its first bytes. Throws invalidPropertyList(). Threads:
/// any.
TAVLEN_API PropertyList readPropertyList(std::string_view bytes);

/// Writes `list`, which must not be empty. Throws EncodingError for values that the form cannot
/// hold. Threads: any.
TAVLEN_API std::string writePropertyList(const PropertyList& list, PropertyListFormat format);

}  // namespace tavlen
