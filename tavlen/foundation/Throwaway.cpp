#include "tavlen/foundation/MainBundle.h"
#include "tavlen/foundation/Placeholders.h"
namespace tavlen {
std::string MainBundle::localizedString(const LocalizedText& t) { return std::string(t.english); }
std::string fillPlaceholders(std::string_view f, std::span<const std::string>) { return std::string(f); }
}
