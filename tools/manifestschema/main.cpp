// Prints the JSON Schema of Manifest.json in an indented form. Runs while the product is built.
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include "tavlen/tweaks/ManifestSchema.h"

namespace {

/// Removes a text from the beginning of `json`, which begins with its quotation mark, and returns
/// it as it is better read: without the backslashes that slashes need not have.
std::string takeText(std::string_view& json) {
  std::string text;
  std::size_t i = 0;
  do {
    if (json[i] == '\\') {
      if (json[i + 1] != '/') text += json[i];
      ++i;
    }
    text += json[i++];
  } while (json[i] != '"');
  json.remove_prefix(i + 1);
  return text + '"';
}

/// The JSON text `json`, which has no blanks between its values, with a line for each of them.
std::string indented(std::string_view json) {
  std::string out;
  std::size_t depth = 0;
  const auto newLine = [&] { out.append("\n").append(2 * depth, ' '); };
  while (!json.empty()) {
    const char c = json.front();
    if (c == '"') {
      out += takeText(json);
      continue;
    }
    json.remove_prefix(1);
    if (c == '}' || c == ']') {
      --depth;
      newLine();
    }
    out += c;
    if (c == '{' || c == '[') ++depth;
    if (c == '{' || c == '[' || c == ',') newLine();
    if (c == ':') out += ' ';
  }
  return out + "\n";
}

}  // namespace

int main() {
  try {
    std::cout << indented(tavlen::manifestSchema()) << std::flush;
    return std::cout ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "manifestschema: " << error.what() << "\n";
    return 1;
  }
}
