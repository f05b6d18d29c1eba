#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/coding/CodingError.h"

namespace tavlen::cli {

/// Returns `body()`. Its exceptions become std::runtime_error with "PLACE: " before the message; a
/// DecodingError is taken to be about the manifest.
template <class Body>
decltype(auto) withPlace(const std::string& place, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const DecodingError& error) {
    throw std::runtime_error(place + ": Manifest.json: " + errorText(error));
  } catch (const std::exception& error) {
    throw std::runtime_error(place + ": " + errorText(error));
  }
}

}  // namespace tavlen::cli
