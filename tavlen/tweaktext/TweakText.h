#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextPosition.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/ManifestCheck.h"

/// A whole tweak as one text that people edit, tweak.toml: the records of its manifest, and the
/// names of the files that go along. docs/tweak-toml.md describes the form.
///
///     [tweak]
///     name = "Dark Notes"
///     app = "com.example.notes"
///
///     [[hook]]
///     method = "-[NoteList titleAt:]"
///     types = "@24@0:8q16"             # without it, setTypes() is to be called
///     return = "Good morning"
///     args.0 = 5                       # an integer, whose kind the types decide
namespace tavlen {

/// The places of a value in a text.
struct TAVLEN_API ValuePlaces {
  /// Where the value begins.
  TextPosition position;
  /// Whether it is written as a plain integer, whose kind the type decides.
  bool isPlainInteger = false;
  /// The places of the values inside it, in the order of the steps of ParameterPath.
  std::vector<ValuePlaces> inside;

  /// The position of the value at the end of `path`; that of a nearer one if the path leads on.
  TextPosition at(const ParameterPath& path) const;
};

/// The places of a hook in a text.
struct TAVLEN_API HookPlaces {
  /// The hook's header.
  TextPosition position;
  /// The method, or the class.
  TextPosition method;
  /// The type encoding; nothing if the text has none.
  std::optional<TextPosition> types;
  /// The replacement values.
  std::map<std::int64_t, ValuePlaces> args;
};

/// The path of a file, relative to the text's folder unless it is absolute. It is not checked.
struct TAVLEN_API FileReference {
  /// As written.
  std::string path;
  /// Where it begins.
  TextPosition position;
};

/// A tweak that was read from a text.
struct TAVLEN_API TweakText {
  /// The manifest. Hooks without types have an empty signature.
  TweakFile::Manifest manifest;
  /// The tweak's own icon.
  std::optional<FileReference> icon;
  /// The tweak's script.
  std::optional<FileReference> script;
  /// The tweak's name.
  TextPosition name = {};
  /// The target app's identifier.
  TextPosition app = {};
  /// The glyph, if the manifest has one.
  TextPosition glyph = {};
  /// For each of manifest._hooks.
  std::vector<HookPlaces> hooks;
  /// For each of manifest._overrides.
  std::vector<TextPosition> overrides;

  /// Where a part of the hook at index `hook` begins: a value, the types, or else the method.
  TextPosition placeOf(std::size_t hook, const HookPlace& place) const;
  /// Where the fault of a problem begins; nothing for a problem of a file.
  std::optional<TextPosition> placeOf(const TweakProblem& problem) const;
  /// Sets the signature of a hook whose types the text leaves out, and the kinds of its integers.
  void setTypes(std::size_t hook, std::string types);
};

}  // namespace tavlen
