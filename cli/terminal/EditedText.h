#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavlen::cli {

/// A text in a temporary file of its own that the user edits in $VISUAL, $EDITOR or vi.
///
/// The file is gone with the object, unless it is kept. One thread at a time; signals of the
/// keyboard reach the editor alone while it runs.
class EditedText {
 public:
  /// `name` is the file's name, from which editors tell the language. Throws std::system_error.
  EditedText(const std::string& name, std::string_view text);
  EditedText(const EditedText&) = delete;
  EditedText& operator=(const EditedText&) = delete;
  ~EditedText();

  /// Runs the editor to its end. Throws std::runtime_error for its failure.
  void edit() const;
  /// What the file holds now. Throws std::system_error.
  std::string text() const;

  /// Leaves the file to the user.
  void keep() { isKept_ = true; }
  const std::filesystem::path& file() const { return file_; }

 private:
  std::filesystem::path file_;
  bool isKept_ = false;
};

}  // namespace tavlen::cli
