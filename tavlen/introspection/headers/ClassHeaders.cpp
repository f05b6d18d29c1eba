#include "tavlen/introspection/headers/ClassHeaders.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/introspection/headers/detail/HeaderFolder.h"
#include "tavlen/introspection/headers/detail/Identifiers.h"
#include "tavlen/introspection/headers/detail/MethodDeclarations.h"
#include "tavlen/introspection/headers/detail/SourceText.h"
#include "tavlen/introspection/headers/detail/TypeDeclarations.h"

namespace tavlen {

namespace {

constexpr std::string_view kPreamble =
    "/* What the headers next to this one have in common. */\n"
    "\n"
    "typedef _Bool BOOL;\n"
    "\n"
    "/* A type that an encoding does not describe, such as a vector. */\n"
    "typedef struct UnknownType UnknownType;\n";

std::string importOf(std::string_view file) { return "#import \"" + std::string(file) + "\"\n"; }

/// "word A, B;" in lines of a readable length; nothing for no names.
void appendForward(std::string& out, std::string_view word,
                   const std::set<std::string_view>& names) {
  constexpr std::size_t kWidth = 100;
  std::size_t width = 0;
  for (const std::string_view name : names) {
    const bool isOnNewLine = width == 0 || width + name.size() > kWidth;
    if (isOnNewLine && width > 0) out += ";\n";
    out += isOnNewLine ? word : ", ";
    if (isOnNewLine) width = word.size();
    out += name;
    width += name.size() + 2;
  }
  if (!names.empty()) out += ";\n";
}

/// The attribute, in a line of its own, of a class or protocol that is declared by another name.
std::string nameAttribute(std::string_view name, std::string_view identifier) {
  if (name == identifier) return "";
  std::string text = "__attribute__((objc_runtime_name(" + sourceLiteral(name) + ")))";
  // The literal has codes instead.
  if (!isASCII(name)) text += "  " + sourceComment(name);
  return text + "\n";
}

/// The name attribute and the beginning of the declaration of a class without a superclass.
std::string rootInterface(std::string_view name, std::string_view identifier) {
  return nameAttribute(name, identifier) + "__attribute__((objc_root_class))\n@interface " +
         std::string(identifier);
}

}  // namespace

/// Writes the headers of one call.
class ClassHeaders::Writer {
 public:
  Writer(const ClassParser::Classes& classes, const std::filesystem::path& folder)
      : classes_(classes), folder_(folder) {
    nameClasses();
    for (std::size_t i = 0; i < classes_.size(); ++i) findSuperclass(i);
    for (std::size_t i = 0; i < classes_.size(); ++i) cutCircle(i);
  }

  void writeClasses() {
    for (std::size_t i = 0; i < classes_.size(); ++i) {
      const ObjCClass& cls = *classes_[i];
      const Place& place = places_[i];
      writeHeader(place.file, place.superclass ? places_[*place.superclass].file : "",
                  interfaceOf(cls, place), place.identifier, cls.methods);
    }
  }

  void writeCategory(const StaticClassParser::Category& category) {
    const auto index = indexOf(category.className);
    const std::string& cls =
        index ? places_[*index].identifier : identifierElsewhere(category.className);
    // A class may have several categories of one name.
    const std::string name = categories_.add(cls + "+" + declarableName(category.name));
    writeHeader(folder_.nameFor(name), index ? places_[*index].file : "",
                "@interface " + cls + " (" + name.substr(cls.size() + 1) + ")" +
                    adoption(category.protocols),
                cls, category.methods);
  }

  /// Writes the file that the others import. Call last: it depends on what they mention.
  void writeCommonFile() {
    std::string text(kPreamble);
    const Names& names = types_.namesInDefinitions();
    if (!names.classes.empty() || !names.protocols.empty()) text += "\n";
    appendForward(text, "@class ", names.classes);
    appendForward(text, "@protocol ", names.protocols);
    if (const std::string definitions = types_.definitions().source(); !definitions.empty()) {
      text += definitions;
    }
    for (const auto& [identifier, name] : protocolsAdopted_) {
      text += "\n" + nameAttribute(name, identifier) + "@protocol " + std::string(identifier) +
              "\n@end\n";
    }
    for (const auto& [identifier, name] : classesElsewhere_) {
      text += "\n" + rootInterface(name, identifier) + "\n@end\n";
    }
    folder_.write(std::string(kCommonFile), text);
  }

 private:
  using Names = TypeDeclarations::Names;

  /// How a class is declared, and where.
  struct Place {
    std::string identifier;
    std::string file;
    std::optional<std::size_t> superclass;  ///< its index, if it is among the classes
    std::size_t walk = 0;                   ///< the number of the walk that came by; 0 for none
    bool isCut = false;                     ///< whether its superclass inherits from it
  };

  /// Gives every class its identifier: first to those that can keep their names.
  void nameClasses() {
    places_.resize(classes_.size());
    for (std::size_t i = 0; i < classes_.size(); ++i) {
      const std::string_view name = classes_[i]->name;
      const bool isFirst = indices_.try_emplace(name, i).second;
      if (isFirst && isDeclarableName(name)) places_[i].identifier = identifiers_.add(name);
    }
    for (std::size_t i = 0; i < classes_.size(); ++i) {
      Place& place = places_[i];
      if (place.identifier.empty()) place.identifier = identifiers_.add(classes_[i]->name);
      place.file = folder_.nameFor(place.identifier);
    }
  }

  void findSuperclass(std::size_t index) {
    const auto& name = classes_[index]->supercls;
    if (name) places_[index].superclass = indexOf(*name);
  }

  /// If the superclasses of the class at `index` lead in a circle, makes one of them a root.
  void cutCircle(std::size_t index) {
    const std::size_t walk = index + 1;
    for (Place* place = &places_[index]; place->walk == 0;) {
      place->walk = walk;
      if (!place->superclass) return;
      Place& next = places_[*place->superclass];
      if (next.walk == walk) {
        place->superclass.reset();
        place->isCut = true;
        return;
      }
      place = &next;
    }
  }

  std::optional<std::size_t> indexOf(std::string_view name) const {
    const auto found = indices_.find(name);
    return found != indices_.end() ? std::optional(found->second) : std::nullopt;
  }

  /// The identifier of a class from elsewhere, which the common file declares.
  const std::string& identifierElsewhere(std::string_view name) {
    const std::string& identifier = identifiers_.of(name);
    classesElsewhere_.try_emplace(identifier, name);
    return identifier;
  }

  /// The first line of the class's declaration, and the attributes before it.
  std::string interfaceOf(const ObjCClass& cls, const Place& place) {
    if (!cls.supercls || place.isCut) {
      std::string text = rootInterface(cls.name, place.identifier) + adoption(cls.protocols);
      if (place.isCut) text += "  " + sourceComment("inherits from itself");
      return text;
    }
    const std::string& superclass = place.superclass ? places_[*place.superclass].identifier
                                                     : identifierElsewhere(*cls.supercls);
    return nameAttribute(cls.name, place.identifier) + "@interface " + place.identifier + " : " +
           superclass + adoption(cls.protocols);
  }

  /// " <P, Q>", of protocols that the common file declares; empty for none.
  template <class Protocols>
  std::string adoption(const Protocols& protocols) {
    std::string text;
    std::unordered_set<std::string_view> listed;
    for (const std::string_view name : protocols) {
      const std::string& identifier = protocols_.of(name);
      protocolsAdopted_.try_emplace(identifier, name);
      if (!listed.insert(identifier).second) continue;
      text += text.empty() ? " <" : ", ";
      text += identifier;
    }
    return text.empty() ? text : text += ">";
  }

  /// Writes the header of a class or category: its `interface` and methods, which belong to the
  /// class `identifier`. Imports `imported`, if any.
  void writeHeader(const std::string& file, std::string_view imported, std::string_view interface,
                   std::string_view identifier, const ObjCClass::Methods& methods) {
    Names names;
    std::string declarations;
    appendMethodDeclarations(declarations, methods, types_, names);
    names.classes.erase(identifier);
    std::string text = importOf(kCommonFile);
    if (!imported.empty()) text += importOf(imported);
    text += '\n';
    appendForward(text, "@class ", names.classes);
    appendForward(text, "@protocol ", names.protocols);
    if (!names.classes.empty() || !names.protocols.empty()) text += '\n';
    text += interface;
    text += "\n\n";
    if (!declarations.empty()) text += declarations + '\n';
    text += "@end\n";
    folder_.write(file, text);
  }

  const ClassParser::Classes& classes_;
  HeaderFolder folder_;
  std::vector<Place> places_;  ///< of the classes, in their order
  /// By name; of several classes with one name, the first.
  std::unordered_map<std::string_view, std::size_t> indices_;
  IdentifierTable identifiers_{"BOOL", TypeDeclarations::kUnknownType};
  IdentifierTable protocols_{};
  UniqueNames categories_{'_'};
  TypeDeclarations types_{identifiers_, protocols_};
  /// The original names of what the common file declares, by identifier.
  std::map<std::string_view, std::string_view> protocolsAdopted_;
  std::map<std::string_view, std::string_view> classesElsewhere_;
};

ClassHeaders::Written ClassHeaders::write(
    const ClassParser::Classes& classes, const std::vector<StaticClassParser::Category>& categories,
    const std::filesystem::path& folder) {
  Writer writer(classes, folder);
  writer.writeClasses();
  for (const auto& category : categories) writer.writeCategory(category);
  writer.writeCommonFile();
  return {classes.size(), categories.size()};
}

}  // namespace tavlen
