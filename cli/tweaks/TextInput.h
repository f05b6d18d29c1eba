#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "cli/terminal/Diagnostic.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/tweaktext/TweakText.h"

namespace tavlen::cli {

/// The bytes of a text, and what it goes by.
struct TextSource {
  std::string bytes;
  std::string file;              ///< the text's path as the user wrote it, for messages
  std::filesystem::path folder;  ///< the one that the files which the text names are relative to
  bool isFolder = false;         ///< whether the folder's attachedFiles() belong to the text
};

/// Reads the text at `argument`, or the tweak.toml in that folder; "-" is the standard input; its
/// folder, like a pipe's, is the current one. Throws std::system_error.
TextSource textSource(const std::string& argument);

/// A tweak as a text describes it, with the other files of the tweak.
struct TextInput {
  /// With the types of all hooks, and without null hooks.
  TweakText text;
  /// The text's path as the user wrote it.
  std::string file;
  /// The text itself.
  std::string bytes;
  /// The tweak's own icon.
  std::optional<Image> icon;
  /// The tweak's script, in UTF-8.
  std::optional<std::string> script;
  /// The folder that contains the text.
  std::filesystem::path folder;
  /// The attachedFiles() that belong to the tweak, in the text's folder: all of a folder, and of a
  /// single text only the resources that it names and that exist.
  std::set<std::string> files;
  /// The folders, of kAttachedFolders, of which the tweak is to have no other files.
  std::set<std::string> wholeFolders;

  /// The line at `position` in the text with a caret below it, as caretLine().
  std::string excerptAt(TextPosition position) const;
  /// A message about a place in the text, without the message.
  Diagnostic at(TextPosition position) const;
  /// The path of a file next to the text, as the user wrote the text's.
  std::string pathOf(const std::string& name) const;
  /// The script's path in this form.
  std::string scriptPath() const;
};

/// Where the messages about a text go.
using DiagnosticSink = std::function<void(const Diagnostic&)>;

/// Reads a text. Types that it leaves out are looked up by lookUpTypes(). Passes errors, with their
/// places in the text, to `report`, and then returns nothing. Throws std::system_error for files
/// that the text does not name.
std::optional<TextInput> readTextInput(const TextSource& source, const DiagnosticSink& report);
/// The same, of textSource(), with printed errors. Throws ReportedError after an error.
TextInput readTextInput(const std::string& argument);

}  // namespace tavlen::cli
