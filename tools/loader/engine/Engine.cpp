#include "tools/loader/engine/Engine.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/engine/HookStack.h"

namespace tavlen::loader {

Engine::Engine(const std::string& code, const std::string& map, EventReceiver& receiver,
               bool isTracing)
    : receiver_(receiver),
      isTracing_(isTracing),
      places_(code, map),
      context_(JSGlobalContextCreate(nullptr)),
      objects_(*this),
      releases_(*this) {}

namespace {

/// Well-formed UTF-8, and no longer than the text of an event. Names of classes may be any bytes.
void shorten(std::string& text) {
  const auto isStart = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; };
  constexpr std::size_t kMostBytes = 4;  // of a code point
  if (text.size() > LoaderEvent::kLongestText * kMostBytes)
    text.resize(LoaderEvent::kLongestText * kMostBytes);
  text = wellFormedUTF8(text);
  std::size_t count = 0;
  const auto end = std::find_if(text.begin(), text.end(), [&](char byte) {
    return isStart(byte) && ++count > LoaderEvent::kLongestText;
  });
  text.erase(end, text.end());
}

}  // namespace

void Engine::report(LoaderEvent event) {
  for (auto* text : {&event.method, &event.message, &event.receiver, &event.result})
    if (*text) shorten(**text);
  if (event.arguments) std::for_each(event.arguments->begin(), event.arguments->end(), shorten);
  receiver_.receive(event);
}

void Engine::report(const char* event, const WatchedCode& code, std::string message) {
  LoaderEvent whole{.event = event, .message = std::move(message)};
  if (!code.method.empty()) whole.method = code.method;
  if (code.place) {
    whole.line = code.place->line;
    whole.column = code.place->column;
  }
  report(std::move(whole));
}

void Engine::reportNoRoom(HookStack& stack, const WatchedCode& code) {
  if (!stack.takeReport()) return;
  const HookStack::OwnWork own(stack);
  report(LoaderEvent::kMistake, code, "the thread's stack has no room for another script");
}

void Engine::forget(JSObjectRef function) {
  const std::lock_guard lock(lock_);
  functions_.erase(function);
}

std::optional<TextPosition> Engine::placeOf(JSObjectRef function) {
  {
    const std::lock_guard lock(lock_);
    if (const auto known = functions_.find(function); known != functions_.end())
      return known->second;
  }
  std::optional<TextPosition> place;
  if (JSStringRef text = JSValueToStringCopy(context_, function, nullptr))
    place = ScriptPlaces::Search(places_, {}).next(EngineString(text).utf8());
  const std::lock_guard lock(lock_);
  return functions_.try_emplace(function, place).first->second;
}

void Engine::reportMistake(const std::string& method, const std::string& message, JSValueRef thrown,
                           JSObjectRef function) {
  constexpr std::size_t kMostRemembered = 1000;
  std::optional<TextPosition> place;
  if (thrown != nullptr) place = places_.placeOf(context_, thrown);
  if (!place && function != nullptr) place = placeOf(function);
  LoaderEvent event{.event = LoaderEvent::kMistake, .message = message};
  shorten(*event.message);
  if (!method.empty()) event.method = method;
  if (place) {
    event.line = place->line;
    event.column = place->column;
  }
  {
    // A message may differ each time, by an address or a number.
    const std::string where =
        place ? std::to_string(place->line) + ':' + std::to_string(place->column) : *event.message;
    const std::lock_guard lock(lock_);
    if (mistakes_.size() > kMostRemembered || !mistakes_.insert(method + '\n' + where).second)
      return;
    if (mistakes_.size() > kMostRemembered)
      event = {.event = LoaderEvent::kMistake, .message = "further mistakes are not shown"};
  }
  report(std::move(event));
}

}  // namespace tavlen::loader
