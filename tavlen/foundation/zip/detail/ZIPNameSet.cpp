#include "tavlen/foundation/zip/detail/ZIPNameSet.h"

#include <unicode/unorm2.h>

#include <algorithm>
#include <cstring>

#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

/// Normalization form C of a component; the component itself when ICU fails.
std::string normalized(std::string_view component) {
  if (isASCII(component)) return std::string(component);
  constexpr std::size_t kMostGrowth = 3;  // of form C, in UTF-16 units
  const std::u16string text = utf16FromUTF8(component);
  std::u16string form(text.size() * kMostGrowth, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* normalizer = unorm2_getNFCInstance(&status);
  const std::int32_t length =
      unorm2_normalize(normalizer, text.data(), static_cast<std::int32_t>(text.size()), form.data(),
                       static_cast<std::int32_t>(form.size()), &status);
  if (U_FAILURE(status)) return std::string(component);
  form.resize(static_cast<std::size_t>(length));
  return utf8FromUTF16(form);
}

std::string keyOf(std::uint32_t parent, std::string_view component) {
  std::string key(sizeof parent, '\0');
  std::memcpy(key.data(), &parent, sizeof parent);
  return key + normalized(component);
}

}  // namespace

ZIPNameSet::Node& ZIPNameSet::nodeAt(std::uint32_t parent, std::string_view component,
                                     Kind kindIfNew) {
  const auto number = static_cast<std::uint32_t>(nodes_.size() + 1);
  const auto [place, isNew] = nodes_.try_emplace(keyOf(parent, component), Node{number, kindIfNew});
  if (isNew && nodes_.size() > mostEntries_) {
    throw ZIPError(ZIPError::Case::tooManyEntries, std::to_string(mostEntries_));
  }
  return place->second;
}

void ZIPNameSet::add(std::string_view name) {
  const auto refuse = [&](ZIPError::Case which) { throw ZIPError(which, std::string(name)); };
  std::string_view path = name;
  const Kind kind = name.ends_with('/') ? Kind::folder : Kind::file;
  if (kind == Kind::folder) path.remove_suffix(1);
  std::uint32_t parent = 0;
  std::size_t begin = 0;
  for (std::size_t end = path.find('/'); end != std::string_view::npos;
       end = path.find('/', begin)) {
    const Node& folder = nodeAt(parent, path.substr(begin, end - begin), Kind::impliedFolder);
    if (folder.kind == Kind::file) refuse(ZIPError::Case::fileAsFolder);
    parent = folder.number;
    begin = end + 1;
  }
  const std::size_t before = nodes_.size();
  Node& node = nodeAt(parent, path.substr(begin), kind);
  if (nodes_.size() > before) return;
  if ((node.kind == Kind::file) != (kind == Kind::file)) refuse(ZIPError::Case::fileAsFolder);
  if (node.kind != Kind::impliedFolder) refuse(ZIPError::Case::duplicateName);
  node.kind = Kind::folder;
}

}  // namespace tavlen
