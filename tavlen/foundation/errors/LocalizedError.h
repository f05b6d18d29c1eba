#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A text of the user interface: the key of its translation, and the English text to use when there
/// is no translation. Both refer to constants.
struct LocalizedText {
  /// The key in `Localizable.strings`; empty for a text that is not translated.
  std::string_view key;
  /// The English text, with placeholders (see Placeholders.h).
  std::string_view english;
};

/// The base of every error of the library.
///
/// An error is a value: it holds its case (in the component's own class), its payload as texts, and
/// the key of its description. The description is looked up in the main bundle's table on request.
/// Threads: `what()` caches the description in the object, so two threads must not call it on one
/// object at once.
class LocalizedError : public std::exception {
 public:
  /// The key of the translation; empty for an error that has none.
  std::string_view localizationKey() const { return text_.key; }
  /// The English text, with its placeholders.
  std::string_view englishText() const { return text_.english; }
  /// The texts that replace the placeholders, in order.
  const std::vector<std::string>& payload() const { return payload_; }

  /// The localized text with its placeholders replaced by the payload.
  virtual std::string description() const;

  /// The description, in UTF-8; valid until the next call or until the object is destroyed.
  const char* what() const noexcept final;

 protected:
  /// `text` must refer to constants: the views are kept.
  explicit LocalizedError(LocalizedText text, std::vector<std::string> payload = {})
      : text_(text), payload_(std::move(payload)) {}

 private:
  LocalizedText text_;
  std::vector<std::string> payload_;
  mutable std::string what_;
};

}  // namespace tavlen
