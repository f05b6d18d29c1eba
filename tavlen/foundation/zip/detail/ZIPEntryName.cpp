#include "tavlen/foundation/zip/detail/ZIPEntryName.h"

#include <zlib.h>

#include <algorithm>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

using namespace std::string_view_literals;

constexpr std::uint16_t kUTF8Flag = 0x0800;
constexpr std::uint16_t kUnicodePathField = 0x7075;
/// The device's limits for a path and a component (PATH_MAX and NAME_MAX).
constexpr std::size_t kLongestName = 1024;
constexpr std::size_t kLongestComponent = 255;

/// The upper half of code page 437.
constexpr std::u16string_view kCodePage437 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
    u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
static_assert(kCodePage437.size() == 128);

std::string fromCodePage437(std::string_view text) {
  std::string out;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    appendUTF8(out, byte < 0x80 ? byte : static_cast<char32_t>(kCodePage437[byte - 0x80U]));
  }
  return out;
}

/// The name in the Unicode path field; empty when the field is missing or its checksum does not
/// match the stored name.
std::string_view unicodePath(std::string_view stored, std::string_view extra) {
  constexpr std::size_t kVersionAndChecksum = 5;
  const std::string_view field = zipExtraField(extra, kUnicodePathField);
  if (field.size() <= kVersionAndChecksum || field[0] != 1) return {};
  const uLong checksum =
      ::crc32(0, reinterpret_cast<const Bytef*>(stored.data()), static_cast<uInt>(stored.size()));
  if (littleEndian<std::uint32_t>(field, 1) != checksum) return {};
  return field.substr(kVersionAndChecksum);
}

void validateComponent(std::string_view component, std::string_view name) {
  if (component == "..") throw ZIPError(ZIPError::Case::parentReference, std::string(name));
  if (component.empty() || component == "." || component.size() > kLongestComponent) {
    throw ZIPError(ZIPError::Case::invalidName, std::string(name));
  }
}

bool isDriveName(std::string_view name) {
  return name.size() > 1 && isLetter(name[0]) && name[1] == ':';
}

}  // namespace

std::string_view zipExtraField(std::string_view extra, std::uint16_t id) {
  constexpr std::size_t kHeader = 4;
  while (extra.size() >= kHeader) {
    const std::size_t size = littleEndian<std::uint16_t>(extra, 2);
    if (size > extra.size() - kHeader) break;  // padding, which some writers add
    if (littleEndian<std::uint16_t>(extra, 0) == id) return extra.substr(kHeader, size);
    extra.remove_prefix(kHeader + size);
  }
  return {};
}

std::string decodeZIPName(std::string_view stored, std::uint16_t flags, std::string_view extra) {
  const bool isUTF8 = isValidUTF8(stored);
  if ((flags & kUTF8Flag) != 0) {
    if (!isUTF8) throw ZIPError(ZIPError::Case::invalidName, wellFormedUTF8(stored));
    return std::string(stored);
  }
  if (const std::string_view name = unicodePath(stored, extra); !name.empty()) {
    if (!isValidUTF8(name)) throw ZIPError(ZIPError::Case::invalidName, wellFormedUTF8(name));
    return std::string(name);
  }
  return isUTF8 ? std::string(stored) : fromCodePage437(stored);
}

void validateZIPName(std::string_view name) {
  using Case = ZIPError::Case;
  const auto refuse = [&](Case which) { throw ZIPError(which, wellFormedUTF8(name)); };
  if (name.empty() || name.size() > kLongestName || !isValidUTF8(name)) refuse(Case::invalidName);
  if (name.starts_with('/') || isDriveName(name)) refuse(Case::absoluteName);
  std::string_view rest = name;
  if (rest.ends_with('/')) rest.remove_suffix(1);
  for (std::size_t begin = 0; begin <= rest.size();) {
    const std::size_t end = std::min(rest.find('/', begin), rest.size());
    validateComponent(rest.substr(begin, end - begin), name);
    begin = end + 1;
  }
  if (name.find_first_of("\\\0"sv) != std::string_view::npos) refuse(Case::invalidName);
}

}  // namespace tavlen
