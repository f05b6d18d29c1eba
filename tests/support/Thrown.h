#pragma once

#include <exception>
#include <optional>
#include <string>

namespace tavlen {

/// The error of that type that `body` throws; nothing where it throws nothing.
template <class Error, class Body>
std::optional<Error> thrown(const Body& body) {
  try {
    body();
  } catch (const Error& error) {
    return error;
  }
  return std::nullopt;
}

/// The text of the error of that type that `body` throws; empty where it throws nothing.
template <class Error = std::exception, class Body>
std::string messageOf(const Body& body) {
  try {
    body();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

}  // namespace tavlen
