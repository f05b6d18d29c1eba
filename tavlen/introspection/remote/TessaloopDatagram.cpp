#include "tavlen/introspection/remote/TessaloopDatagram.h"

#include <bit>
#include <cerrno>

#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

TessaloopDatagram TessaloopDatagram::read(std::string_view bytes) {
  std::string valueBytes(bytes.substr(0, sizeof(double)));
  valueBytes.resize(sizeof(double), '\0');
  TessaloopDatagram datagram;
  datagram.value = std::bit_cast<double>(littleEndian<std::uint64_t>(valueBytes, 0));
  if (!datagram.isFinal()) return datagram;
  std::string_view path = bytes.substr(sizeof(double), kMostPathBytes);
  path = path.substr(0, path.find('\0'));
  if (!path.empty() && isValidUTF8(path)) datagram.path = path;
  return datagram;
}

std::string TessaloopDatagram::written() const {
  std::string bytes;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (unsigned shift = 0; shift < 64; shift += 8) bytes += static_cast<char>(bits >> shift);
  if (!isFinal()) return bytes;
  const std::string text = path.value_or("");
  if (text.size() >= kMostPathBytes) {
    throwSystemError(ENAMETOOLONG, text);
  }
  return bytes.append(text).append(1, '\0');
}

}  // namespace tavlen
