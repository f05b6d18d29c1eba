#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/LocalizedError.h"
#include "tavlen/foundation/javascript/JavaScriptContext.h"
#include "tavlen/foundation/javascript/JavaScriptValue.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

/// Translates a tweak into installable code by means of the transpiler script "ob.js".
///
/// The first exception in the script, while loading or later, is kept: every later conversion
/// throws it again. Use a processor for one tweak only. Conversions block, in
/// proportion to the text, and cannot be cancelled. The first processor starts threads and replaces
/// signal handlers, see JavaScriptContext. Threads: use it on one thread.
class TAVLEN_API TweakProcessor {
 public:
  class Error;

  /// The result of a conversion.
  struct Output {
    std::string code;  ///< JavaScript
    std::string map;   ///< the source map of `code`, as JSON; empty if it is left out
  };

  /// Whether a caller needs the source map, which takes time to make.
  enum class Map { make, leaveOut };

  /// Loads "ob.js" from the folder `container`. Throws std::system_error if it cannot be read, and
  /// JavaScriptContext::EngineError. If
  /// the script does not define the global "OBJSTranspiler", the process is terminated.
  explicit TweakProcessor(const std::filesystem::path& container);

  /// Whether "ob.js" in the folder `container` defines "OBJSTranspiler", which has to be known
  /// before a processor is made of a script from elsewhere. Runs the script. Throws
  /// std::system_error if it cannot be read, and Error if it threw before defining the global.
  static bool isTranspiler(const std::filesystem::path& container);

  /// Translates hook source. Throws Error. With Map::leaveOut, the transpiler's result must have a
  /// map, too, but if that is a getter, it is not run.
  Output convert(std::string_view code, Map map = Map::make);

  /// The hook source of `hooks`. Throws EncodingError; see generateHookSource().
  static std::string generateCode(std::span<const Hook> hooks);

  /// The text to convert for a tweak: the source of its hooks, two line feeds (unless that source
  /// is empty), and its script.
  static std::string assembled(std::string generatedCode, std::string_view script);

  /// Converts the hooks of `manifest` and the script. Throws what generateCode() and convert()
  /// throw.
  Output process(const TweakFile::Manifest& manifest, std::string_view script);
  /// Reads the hooks and the script of `tweak` and converts them. Throws what
  /// TweakFile::manifest(), generateCode() and convert() throw; a script that cannot be read counts
  /// as empty.
  Output process(const TweakFile& tweak);

 private:
  /// The transpiler object. It keeps its context alive.
  JavaScriptValue objs_;
};

/// A failed conversion.
class TAVLEN_API TweakProcessor::Error : public LocalizedError {
 public:
  /// An exception in the transpiler, or a result without code and map.
  enum class Case { jsException, invalidOutput };

  /// The script threw an exception. `stack` is the call stack, if the engine provides one.
  static Error jsException(std::string name, std::string message, std::optional<std::string> stack);
  /// The script threw a text instead of an object: a jsException with that message, without a name.
  static Error thrownText(std::string text);
  /// The script did not return an object with code and map.
  static Error invalidOutput();

  /// The case.
  Case which() const { return case_; }
  /// The exception's name, such as "SyntaxError". Only for jsException; empty otherwise.
  const std::string& name() const { return name_; }
  /// The exception's message. Only for jsException; empty otherwise.
  const std::string& message() const { return message_; }
  /// Name and message as one text for people, without those that the exception lacks. Only for
  /// jsException; empty otherwise.
  std::string reason() const;
  /// The exception's call stack, if known. Only for jsException.
  const std::optional<std::string>& stack() const { return stack_; }
  std::string description() const override;

 private:
  Error(Case which, LocalizedText text) : LocalizedError(text), case_(which) {}

  Case case_;
  std::string name_;
  std::string message_;
  std::string nameAndMessage_;
  std::optional<std::string> stack_;
};

}  // namespace tavlen
