#include "tavlen/foundation/base/UUID.h"

#include <uuid/uuid.h>

#include <array>

namespace tavlen {

std::string newUUIDText() {
  uuid_t uuid;  // NOLINT(modernize-avoid-c-arrays): the library's type
  uuid_generate_random(&uuid[0]);
  constexpr std::size_t kLength = 36;
  std::array<char, kLength + 1> text{};
  uuid_unparse_upper(&uuid[0], text.data());
  return {text.data(), kLength};
}

}  // namespace tavlen
