#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/DescribedError.h"

namespace tavlen {

/// A text of the user interface: the key of its translation, and the English text to use when there
/// is no translation. Both refer to constants.
struct TAVLEN_API LocalizedText {
  /// The key in `Localizable.strings`; empty for a text that is not translated.
  std::string_view key;
  /// The English text, with placeholders (see Placeholders.h).
  std::string_view english;
};

/// The base of the errors that are translated.
///
/// An error is a value: it holds its case (in the component's own class), its payload as texts, and
/// the key of its description. The description is looked up in the main bundle's table on request.
class TAVLEN_API LocalizedError : public DescribedError {
 public:
  /// The key of the translation; empty for an error that has none.
  std::string_view localizationKey() const { return text_.key; }
  /// The English text, with its placeholders.
  std::string_view englishText() const { return text_.english; }
  /// The texts that replace the placeholders, in order.
  const std::vector<std::string>& payload() const { return payload_; }

  /// The localized text with its placeholders replaced by the payload.
  std::string description() const override;

 protected:
  /// `text` must refer to constants: the views are kept.
  explicit LocalizedError(LocalizedText text, std::vector<std::string> payload = {})
      : text_(text), payload_(std::move(payload)) {}

 private:
  LocalizedText text_;
  std::vector<std::string> payload_;
};

}  // namespace tavlen
