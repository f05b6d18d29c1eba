#include "tavlen/parameters/ParameterPath.h"

namespace tavlen {

namespace {

/// The number of parameters directly inside one.
std::size_t countInside(const Parameter& parameter) {
  if (const auto* array = std::get_if<ArrayParameter>(&parameter)) return array->_items.size();
  const auto* dictionary = std::get_if<DictionaryParameter>(&parameter);
  return dictionary != nullptr ? 2 * dictionary->_items.size() : 0;
}

const Parameter& inside(const Parameter& parameter, std::size_t step) {
  if (const auto* array = std::get_if<ArrayParameter>(&parameter)) return array->_items[step].value;
  const auto& pair = std::get<DictionaryParameter>(parameter)._items[step / 2];
  return step % 2 == 0 ? pair.key() : pair.value();
}

void visitAll(const Parameter& parameter, ParameterPath& path,
              const std::function<void(const Parameter&, const ParameterPath&)>& visit) {
  visit(parameter, path);
  const std::size_t count = countInside(parameter);
  for (std::size_t step = 0; step < count; ++step) {
    path.push_back(step);
    visitAll(inside(parameter, step), path, visit);
    path.pop_back();
  }
}

}  // namespace

std::string documentPath(const Parameter& parameter, const ParameterPath& path) {
  std::string text;
  const Parameter* current = &parameter;
  for (const std::size_t step : path) {
    const bool isArray = std::holds_alternative<ArrayParameter>(*current);
    text += ".items[" + std::to_string(isArray ? step : step / 2) + "]";
    if (!isArray) text += step % 2 == 0 ? ".key" : ".value";
    current = &inside(*current, step);
  }
  return text;
}

void forEachParameter(
    const Parameter& parameter,
    const std::function<void(const Parameter& each, const ParameterPath& path)>& visit) {
  ParameterPath path;
  visitAll(parameter, path, visit);
}

}  // namespace tavlen
