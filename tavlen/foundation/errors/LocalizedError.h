#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A text of the user interface: the key of its translation and the English that stands in for a
/// missing one.
struct LocalizedText {
  std::string_view key;
  std::string_view english;
};

/// The base of every error of the library.
///
/// An error is a value: it holds its case (in the component's own class), its payload as texts, and
/// where its description comes from. The description is looked up when it is asked for, in the main
/// bundle's table. Threads: `what()` caches the description in the object, so one object must not
/// be asked from two threads at once.
class LocalizedError : public std::exception {
 public:
  /// Empty for an error that has no translation.
  std::string_view localizationKey() const { return text_.key; }
  std::string_view englishText() const { return text_.english; }
  const std::vector<std::string>& payload() const { return payload_; }

  /// The looked-up text with the payload in the place of its placeholders.
  virtual std::string description() const;

  /// The description.
  const char* what() const noexcept final;

 protected:
  /// `text` must hold constants: the views are kept.
  explicit LocalizedError(LocalizedText text, std::vector<std::string> payload = {})
      : text_(text), payload_(std::move(payload)) {}

 private:
  LocalizedText text_;
  std::vector<std::string> payload_;
  mutable std::string what_;
};

}  // namespace tavlen
