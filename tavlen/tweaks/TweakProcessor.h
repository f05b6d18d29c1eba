#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/errors/LocalizedError.h"
#include "tavlen/foundation/javascript/JavaScriptContext.h"
#include "tavlen/foundation/javascript/JavaScriptValue.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

/// Turns a tweak into code that can be installed, by the transpiler script "ob.js".
///
/// The first exception of its script, in loading or later, stays: every conversion from then on
/// reports it. So a processor serves one tweak and is dropped. Threads: belongs to the thread that
/// uses it.
class TweakProcessor {
 public:
  class Error;

  /// What the transpiler makes of a source.
  struct Output {
    std::string code;
    /// A source map of the code.
    std::string map;
  };

  /// Loads "ob.js" from the folder `container`. Throws std::system_error where it cannot be read. A
  /// script that does not define the global "OBJSTranspiler" stops the process.
  explicit TweakProcessor(const std::filesystem::path& container);

  /// Throws Error.
  Output convert(std::string_view code);

  /// The hook source of `hooks`. Throws EncodingError; see generateHookSource.
  static std::string generateCode(std::span<const Hook> hooks);

  /// The text that a tweak is converted from: the source of its hooks, two line feeds unless that
  /// is empty, and its script.
  static std::string assembled(std::string generatedCode, std::string_view script);

  /// Converts the hooks of `manifest` and the text of its tweak's script. Throws what
  /// generateCode() and convert() throw.
  Output process(const TweakFile::Manifest& manifest, std::string_view script);
  /// Reads the hooks and the script of `tweak` and converts them. Throws what
  /// TweakFile::manifest(), generateCode() and convert() throw; a script that cannot be read counts
  /// as empty.
  Output process(const TweakFile& tweak);

 private:
  /// The transpiler object. It keeps its context alive.
  JavaScriptValue objs_;
};

class TweakProcessor::Error : public LocalizedError {
 public:
  enum class Case { jsException, invalidOutput };

  /// `stack` is the call stack, where the engine gives one.
  static Error jsException(std::string name, std::string message, std::optional<std::string> stack);
  static Error invalidOutput();

  Case which() const { return case_; }
  /// Of a jsException; empty otherwise.
  const std::string& name() const { return name_; }
  const std::string& message() const { return message_; }
  const std::optional<std::string>& stack() const { return stack_; }
  std::string description() const override;

 private:
  Error(Case which, LocalizedText text) : LocalizedError(text), case_(which) {}

  Case case_;
  std::string name_;
  std::string message_;
  std::optional<std::string> stack_;
};

}  // namespace tavlen
