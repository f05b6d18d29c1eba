#include "tavlen/introspection/types/JXTypeID.h"

#include <mutex>
#include <utility>

#include "tavlen/foundation/text/Characters.h"
#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/introspection/types/JXTypeIDIgnoreName.h"

namespace tavlen {

namespace {

/// `piece` without its last UTF-8 character.
std::string_view withoutLast(std::string_view piece) {
  std::size_t last = piece.empty() ? 0 : piece.size() - 1;
  while (last > 0 && isUTF8Continuation(piece[last])) --last;
  return piece.substr(0, last);
}

/// The pieces of `text` after each "<", without their last characters.
JXTypeID::Protocols protocolsIn(std::string_view text) {
  JXTypeID::Protocols protocols;
  for (std::size_t begin = text.find('<'); begin != std::string_view::npos;) {
    const std::size_t end = text.find('<', begin + 1);
    const std::size_t length = end == std::string_view::npos ? end : end - begin - 1;
    protocols.push_back(withoutLast(text.substr(begin + 1, length)));
    begin = end;
  }
  return protocols;
}

/// Moves `cursor` from an opening quote past the closing one; returns the text between.
std::string_view readQuoted(JXTypeCursor& cursor) {
  cursor.advance();
  const std::size_t begin = cursor.position();
  cursor.moveTo(cursor.text().find('"', begin));
  const std::string_view quoted = cursor.text().substr(begin, cursor.position() - begin);
  cursor.advance();
  return quoted;
}

bool ignoresName() {
  const std::lock_guard lock(JXTypeIDIgnoreNameLock);
  return JXTypeIDIgnoreName;
}

}  // namespace

JXTypeID::JXTypeID(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers, bool isBlock,
                   std::string_view name, std::unique_ptr<const Protocols> protocols)
    : JXType(std::move(encoding), qualifiers, 0, isBlock),
      name_(name),
      protocols_(std::move(protocols)) {}

std::shared_ptr<JXTypeID> JXTypeID::withoutName(JXTypeQualifiers qualifiers, bool isBlock) {
  const SharedText text = SharedText::lasting(isBlock ? "@?" : "@");
  if (qualifiers != JXTypeQualifiers::none) {
    return std::make_shared<JXTypeID>(Key(), text, qualifiers, isBlock, std::string_view(),
                                      nullptr);
  }
  // As frequent as basic types, so there is one static node.
  static auto* object = new JXTypeID(Key(), SharedText::lasting("@"), JXTypeQualifiers::none, false,
                                     std::string_view(), nullptr);
  static auto* block = new JXTypeID(Key(), SharedText::lasting("@?"), JXTypeQualifiers::none, true,
                                    std::string_view(), nullptr);
  return {std::shared_ptr<void>(), isBlock ? block : object};
}

std::shared_ptr<JXTypeID> JXTypeID::initWithEncoding(JXTypeCursor& cursor,
                                                     JXTypeQualifiers qualifiers) {
  const std::size_t begin = cursor.position();
  cursor.advance();
  // Ask only before a quote: the flag requires a lock.
  if (!cursor.isAt('"') || ignoresName()) {
    const bool isBlock = cursor.isAt('?');
    if (isBlock) cursor.advance();
    return withoutName(qualifiers, isBlock);
  }
  cursor.keepText();
  std::string_view name = readQuoted(cursor);
  std::unique_ptr<const Protocols> protocols;
  if (const std::size_t bracket = name.find('<'); bracket != std::string_view::npos) {
    protocols = std::make_unique<const Protocols>(protocolsIn(name));
    name = bracket == 0 ? std::string_view() : name.substr(0, bracket);
  }
  return std::make_shared<JXTypeID>(Key(), cursor.textFrom(begin), qualifiers, false, name,
                                    std::move(protocols));
}

std::shared_ptr<JXTypeID> JXTypeID::initWithName(
    const std::optional<std::string>& name,
    const std::optional<std::vector<std::string>>& protocols, bool isBlock) {
  // The name and protocols of a block are stored after its encoding.
  std::string text = isBlock ? "@?" : "@";
  if (name || protocols) text += '"';
  std::vector<std::string_view> pieces;
  const std::size_t nameBegin = text.size();
  text += name.value_or("");
  std::size_t begin = text.size();
  for (const std::string& protocol : protocols.value_or(std::vector<std::string>())) {
    text += "<" + protocol + ">";
  }
  if (name || protocols) text += '"';
  const SharedText kept = text;
  const char* bytes = kept.data();
  std::unique_ptr<Protocols> list;
  if (protocols) {
    list = std::make_unique<Protocols>();
    for (const std::string& protocol : *protocols) {
      list->emplace_back(bytes + begin + 1, protocol.size());
      begin += protocol.size() + 2;
    }
  }
  const std::string_view keptName =
      name ? std::string_view(bytes + nameBegin, name->size()) : std::string_view();
  return std::make_shared<JXTypeID>(Key(), kept.piece(0, isBlock ? 2 : std::string::npos),
                                    JXTypeQualifiers::none, isBlock, keptName, std::move(list));
}

std::optional<std::string_view> JXTypeID::name() const {
  return name_.data() != nullptr ? std::optional(name_) : std::nullopt;
}

void JXTypeID::appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const {
  if (isBlock()) {
    out += "void (^";
    return;
  }
  if (name()) {
    out += name_;
  } else {
    out += "id";
  }
  if (protocols_ != nullptr && !protocols_->empty()) {
    out += '<';
    for (const std::string_view& protocol : *protocols_) {
      if (&protocol != protocols_->data()) out += ", ";
      out += protocol;
    }
    out += '>';
  }
  if (name()) {
    out += " *";
  } else if (padding) {
    out += ' ';
  }
}

void JXTypeID::appendOwnTail(std::string& out) const {
  if (isBlock()) out += ")(void)";
}

bool JXTypeID::hasSameParts(const JXType& other) const {
  const auto& object = static_cast<const JXTypeID&>(other);
  const bool haveProtocols = protocols_ != nullptr && object.protocols_ != nullptr;
  return name() == object.name() && (protocols_ == nullptr) == (object.protocols_ == nullptr) &&
         (!haveProtocols || *protocols_ == *object.protocols_);
}

}  // namespace tavlen
