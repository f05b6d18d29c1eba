#include "tools/loader/engine/Engine.h"

#include "tools/loader/base/EngineString.h"

namespace tavlen::loader {

Engine::Engine(const std::string& code, const std::string& map, EventReceiver& receiver,
               bool isTracing)
    : receiver_(receiver),
      isTracing_(isTracing),
      places_(code, map),
      context_(JSGlobalContextCreate(nullptr)),
      objects_(*this),
      releases_(*this) {}

std::optional<TextPosition> Engine::placeOf(JSValueRef thrown, JSObjectRef function) const {
  std::optional<TextPosition> place;
  if (thrown != nullptr) place = places_.placeOf(context_, thrown);
  if (place || function == nullptr) return place;
  JSStringRef text = JSValueToStringCopy(context_, function, nullptr);
  return text == nullptr ? place : places_.placeOf(EngineString(text).utf8());
}

void Engine::reportMistake(const std::string& method, const std::string& message, JSValueRef thrown,
                           JSObjectRef function) {
  constexpr std::size_t kMostRemembered = 1000;
  const std::optional<TextPosition> place = placeOf(thrown, function);
  LoaderEvent event{.event = LoaderEvent::kMistake, .message = message};
  if (!method.empty()) event.method = method;
  if (place) {
    event.line = place->line;
    event.column = place->column;
  }
  {
    const std::lock_guard lock(lock_);
    const std::string key = method + '\n' + message + '\n' + std::to_string(event.line.value_or(0));
    if (mistakes_.size() >= kMostRemembered || !mistakes_.insert(key).second) return;
  }
  report(event);
}

}  // namespace tavlen::loader
