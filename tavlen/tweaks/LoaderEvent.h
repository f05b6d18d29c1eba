#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// What a loader reports. A plain value, which travels as JSON.
struct TAVLEN_API LoaderEvent {
  /// Each text has at most so many code points; of a longer one the beginning is kept.
  static constexpr std::size_t kLongestText = 1000;

  static constexpr const char* kStarted = "started";  ///< the program runs with the tweak
  static constexpr const char* kHooked = "hooked";
  static constexpr const char* kWaiting = "waiting";  ///< not hooked yet: no image has it
  static constexpr const char* kRefused = "refused";  ///< not hooked
  static constexpr const char* kMistake = "mistake";  ///< of the script; the original answered
  static constexpr const char* kSlow = "slow";  ///< a script computes for longer than the limit
  static constexpr const char* kCall = "call";  ///< a hooked call, when tracing

  std::string event;                        ///< one of the above
  std::optional<std::string> method = {};   ///< "-[Class selector]"
  std::optional<std::string> message = {};  ///< the reason
  std::optional<std::uint64_t> line =
      {};  ///< in the source that the map leads to, from 1; together with the column
  std::optional<std::uint64_t> column = {};                ///< in UTF-16 units, from 1
  std::optional<std::string> receiver = {};                ///< of a call
  std::optional<std::vector<std::string>> arguments = {};  ///< of a call
  std::optional<std::string> result = {};                  ///< of a call that returned something
  std::optional<double> microseconds = {};  ///< of a call: wall-clock time with the original's

  static constexpr auto codedFields() {
    return std::tuple{requiredField("event", &LoaderEvent::event),
                      optionalField("method", &LoaderEvent::method),
                      optionalField("message", &LoaderEvent::message),
                      optionalField("line", &LoaderEvent::line),
                      optionalField("column", &LoaderEvent::column),
                      optionalField("receiver", &LoaderEvent::receiver),
                      optionalField("arguments", &LoaderEvent::arguments),
                      optionalField("result", &LoaderEvent::result),
                      optionalField("microseconds", &LoaderEvent::microseconds)};
  }
};

}  // namespace tavlen
