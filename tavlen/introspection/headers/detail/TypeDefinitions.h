#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tavlen/introspection/headers/detail/Identifiers.h"

namespace tavlen {

/// The definitions of structs and unions, each of which has one, whatever the number of encodings
/// that mention it. Threads: one object one thread at a time.
class TypeDefinitions {
 public:
  /// A position in the list of definitions, in the order of their first mention.
  using Index = std::size_t;

  /// Another struct or union that a compiler must know whole before a member.
  struct Part {
    /// The other one.
    Index type;
    /// How many of them the member holds, or points to the beginning of; at least 1.
    std::uint64_t count;
  };

  /// A member of a body.
  struct Member {
    /// Its name; empty for none.
    std::string name;
    /// Its declaration without the semicolon; empty if C has none for its type.
    std::string text;
    std::vector<Part> parts;  ///< what must be known before
    std::uint64_t bytes = 0;  ///< at least its size, without its parts
  };

  /// What is known of the members. Of several bodies of one name, the fullest is kept.
  struct Body {
    std::vector<Member> members;
    /// Whether the encoding names the members.
    bool hasNames = false;
    std::size_t encodingLength = 0;  ///< the longer one says more of the same members
  };

  /// The type `name`, in C a `keyword` ("struct" or "union") with a tag.
  Index named(std::string_view keyword, std::string_view name);
  /// The type without a name whose encoding is `encoding`, in C a typedef with a name of its own
  /// among `typedefs`.
  Index unnamed(std::string_view keyword, std::string_view encoding, IdentifierTable& typedefs);

  /// How C refers to the type: `struct CGRect`. Valid until the next type is added.
  const std::string& reference(Index type) const { return types_[type].reference; }
  /// Sets the body unless the present one is at least as full.
  void setBody(Index type, Body body);
  /// Has the type defined even if no body is known, because it is part of something.
  void setNeededWhole(Index type) { types_[type].isNeededWhole = true; }

  /// C source with all definitions, each after those that it needs.
  std::string source() const;

 private:
  struct Type {
    std::string keyword;
    std::string reference;
    std::string original;  ///< the name where it is no identifier
    bool isTypedef = false;
    bool isNeededWhole = false;
    Body body;
  };
  class Writer;

  Index add(std::string key, Type type);

  std::vector<Type> types_;
  std::unordered_map<std::string, Index> indices_;
  IdentifierTable tags_{"UnknownType"};
};

}  // namespace tavlen
