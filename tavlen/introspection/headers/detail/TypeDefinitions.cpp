#include "tavlen/introspection/headers/detail/TypeDefinitions.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

#include "tavlen/introspection/headers/detail/SourceText.h"

namespace tavlen {

/// Writes definitions after those that they need. Not recursive: a hostile image can have any
/// number of structs in a chain.
class TypeDefinitions::Writer {
 public:
  explicit Writer(const std::vector<Type>& types) : types_(types), states_(types.size()) {}

  std::string write() {
    std::vector<Index> order(types_.size());
    std::iota(order.begin(), order.end(), Index{0});
    std::sort(order.begin(), order.end(),
              [this](Index a, Index b) { return types_[a].reference < types_[b].reference; });
    for (const Index type : order) {
      if (isDefined(type)) continue;
      if (source_.empty()) source_ += "\n";
      source_ += types_[type].reference + ";" + remark(type) + "\n";
    }
    for (const Index type : order) {
      if (isDefined(type)) writeAfterParts(type);
    }
    return std::move(source_);
  }

 private:
  enum class Progress { none, begun, done };

  /// What is known of a type so far.
  struct State {
    Progress progress = Progress::none;
    std::size_t nextMember = 0;  ///< the first one whose parts may be unwritten
    std::size_t nextPart = 0;    ///< of that member
    std::uint64_t bytes = 0;     ///< at least the size, once it is done
    std::vector<bool> isCyclic;  ///< by member: whether it would contain the type itself
  };

  bool isDefined(Index type) const {
    return types_[type].isNeededWhole || !types_[type].body.members.empty();
  }

  std::string remark(Index type) const {
    const std::string& original = types_[type].original;
    return original.empty() ? "" : "  " + sourceComment(original);
  }

  void writeAfterParts(Index root) {
    std::vector<Index> path = {root};
    while (!path.empty()) {
      const Index type = path.back();
      if (const Index* part = nextUnwritten(type)) {
        path.push_back(*part);
        continue;
      }
      path.pop_back();
      if (states_[type].progress != Progress::done) writeDefinition(type);
    }
  }

  /// The next part of the type that must be written before it; null if there is none left.
  const Index* nextUnwritten(Index type) {
    const std::vector<Member>& members = types_[type].body.members;
    State& state = states_[type];
    if (state.progress == Progress::done) return nullptr;
    state.progress = Progress::begun;
    state.isCyclic.resize(members.size());
    for (; state.nextMember < members.size(); ++state.nextMember, state.nextPart = 0) {
      const std::vector<Part>& parts = members[state.nextMember].parts;
      while (state.nextPart < parts.size()) {
        const Part& part = parts[state.nextPart++];
        const Progress progress = states_[part.type].progress;
        if (progress == Progress::none) return &part.type;
        if (progress == Progress::begun) state.isCyclic[state.nextMember] = true;
      }
    }
    return nullptr;
  }

  void writeDefinition(Index index) {
    const Type& type = types_[index];
    State& state = states_[index];
    state.progress = Progress::done;
    source_ += "\n";
    source_ += type.isTypedef ? "typedef " + type.keyword : type.reference;
    source_ += " {" + remark(index) + "\n";
    for (std::size_t i = 0; i < type.body.members.size(); ++i) {
      const Member& member = type.body.members[i];
      source_ += "    ";
      if (member.text.empty()) {
        source_ += "/* " + member.name + ": unknown type */\n";
      } else if (state.isCyclic[i]) {
        source_ += "/* " + member.name + ": contains this type itself */\n";
      } else if (!count(member, state.bytes)) {
        source_ += "/* " + member.name + ": too large */\n";
      } else {
        source_ += member.text + ";\n";
      }
    }
    source_ += type.isTypedef ? "} " + type.reference + ";\n" : "};\n";
  }

  /// Adds the size of the member to `bytes`. Returns false, with `bytes` unchanged, for a member
  /// that makes the type too large.
  bool count(const Member& member, std::uint64_t& bytes) const {
    // So that an array of as many elements as are declared is within what compilers allow.
    constexpr std::uint64_t kMost = std::uint64_t{1} << 30;
    std::uint64_t sum = bytes + std::min(member.bytes, kMost);
    for (const Part& part : member.parts) {
      const std::uint64_t size = states_[part.type].bytes;
      if (size > kMost / part.count) return false;
      sum += size * part.count;
      if (sum > kMost) return false;
    }
    if (sum > kMost) return false;
    bytes = sum;
    return true;
  }

  const std::vector<Type>& types_;
  std::vector<State> states_;
  std::string source_;
};

TypeDefinitions::Index TypeDefinitions::named(std::string_view keyword, std::string_view name) {
  std::string key(keyword);
  key += ' ';
  key += name;
  if (const auto found = indices_.find(key); found != indices_.end()) return found->second;
  // A struct and a union may have the same name, but not the same tag.
  const std::string tag = tags_.add(name);
  Type type;
  type.keyword = keyword;
  type.reference = type.keyword + " " + tag;
  if (tag != name) type.original = name;
  return add(std::move(key), std::move(type));
}

TypeDefinitions::Index TypeDefinitions::unnamed(std::string_view keyword, std::string_view encoding,
                                                IdentifierTable& typedefs) {
  std::string key(encoding);
  if (const auto found = indices_.find(key); found != indices_.end()) return found->second;
  Type type;
  type.keyword = keyword;
  type.reference = typedefs.reserve(keyword == "union" ? "UnnamedUnion" : "UnnamedStruct");
  type.isTypedef = true;
  type.isNeededWhole = true;
  return add(std::move(key), std::move(type));
}

TypeDefinitions::Index TypeDefinitions::add(std::string key, Type type) {
  types_.push_back(std::move(type));
  indices_.emplace(std::move(key), types_.size() - 1);
  return types_.size() - 1;
}

void TypeDefinitions::setBody(Index type, Body body) {
  const auto fullness = [](const Body& b) {
    return std::tuple(b.members.size(), b.hasNames, b.encodingLength);
  };
  Body& present = types_[type].body;
  if (fullness(body) > fullness(present)) present = std::move(body);
}

std::string TypeDefinitions::source() const { return Writer(types_).write(); }

}  // namespace tavlen
