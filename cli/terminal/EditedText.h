#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// A text in a temporary file, which the user edits in $VISUAL, $EDITOR or vi. Without a terminal,
/// vi is not started, and another editor has no standard input.
///
/// The destructor deletes the file, unless keep() was called. Threads: one at a time. While the
/// editor runs, this process ignores keyboard signals; only the editor receives them.
class EditedText {
 public:
  /// Writes `text` to a new file. Editors recognise the language by `name`, the file's name. Throws
  /// std::system_error.
  EditedText(const std::string& name, std::string_view text);
  EditedText(const EditedText&) = delete;
  EditedText& operator=(const EditedText&) = delete;
  ~EditedText();

  /// Whether a person can use an editor: the standard streams are a terminal.
  static bool hasTerminal();

  /// Runs the editor and waits for it to exit. Throws std::runtime_error if it fails.
  void edit() const;
  /// The file's current contents. Throws std::system_error.
  std::string text() const;

  /// Replaces the file's contents, for another call of edit(). Throws std::system_error.
  void setText(std::string_view text) const;

  /// Keeps the file on destruction, for the user.
  void keep() { isKept_ = true; }
  /// The path of the file.
  const std::filesystem::path& file() const { return file_; }

 private:
  std::filesystem::path file_;
  bool isKept_ = false;
};

}  // namespace tavlen::cli
