#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/introspection/headers/detail/Identifiers.h"
#include "tavlen/introspection/headers/detail/TypeDefinitions.h"
#include "tavlen/introspection/types/JXType.h"
#include "tavlen/introspection/types/JXTypeComplex.h"

namespace tavlen {

/// C declarations of encoded types. Named structs and unions are declared by their name, and their
/// bodies collected. Threads: one object one thread at a time.
class TypeDeclarations {
 public:
  /// The C name of a type that its encoding does not describe: an incomplete type.
  static constexpr std::string_view kUnknownType = "UnknownType";

  /// Identifiers that declarations mention. Valid as long as the tables.
  struct Names {
    std::set<std::string_view> classes;
    std::set<std::string_view> protocols;
  };

  /// `names` are the identifiers of classes and typedefs, which share a scope. Both tables must
  /// outlive the object.
  TypeDeclarations(IdentifierTable& names, IdentifierTable& protocols)
      : identifiers_(names), protocols_(protocols) {}

  /// The type of a method's result, without the parentheses.
  std::string result(std::string_view encoding, Names& names);
  /// The type of a method's argument, without the parentheses.
  std::string argument(std::string_view encoding, Names& names);

  /// The structs and unions that the types named so far consist of.
  const TypeDefinitions& definitions() const { return definitions_; }
  /// What the bodies of those mention.
  const Names& namesInDefinitions() const { return bodyNames_; }

 private:
  using Member = TypeDefinitions::Member;
  class Declaration;

  std::string methodType(std::string_view encoding, Names& names, bool isResult);
  void define(TypeDefinitions::Index index, const JXTypeComplex& type);
  /// The members of a type that has a body and is there `count` times.
  std::vector<Member> membersOf(const JXTypeComplex& type, Names& names, std::uint64_t count);

  IdentifierTable& identifiers_;
  IdentifierTable& protocols_;
  TypeDefinitions definitions_;
  Names bodyNames_;
};

}  // namespace tavlen
