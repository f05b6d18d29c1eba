#include "tests/introspection/classes/ObjdumpText.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace tavlen {

namespace {

constexpr std::string_view kClassSymbol = "_OBJC_CLASS_$_";
constexpr std::string_view kCategorySymbol = "__OBJC_$_CATEGORY_";

/// A class or a category.
struct Entry {
  std::string address;
  std::string symbol;
  std::string name;
  std::string superclass;  ///< the address, or the class's name after kClassSymbol
  std::string cls;         ///< the address of a category's class
  ObjCClass::Methods methods, classMethods;
  std::vector<SharedText> protocols;
};

/// A line: the number of tabs that it begins with, and its words. Only the last may hold blanks.
struct Line {
  explicit Line(const std::string& text)
      : tabs(std::min(text.find_first_not_of('\t'), text.size())) {
    std::istringstream stream(text);
    stream >> first >> second;
    std::getline(stream >> std::ws, rest);
  }
  std::size_t tabs;
  std::string first, second, rest;
};

class Reader {
 public:
  void read(const Line& line) {
    if (line.first == "Contents") {
      // The name of a section is the last of its segment and name, in parentheses.
      isClassList_ = line.rest.find("__objc_classlist") != std::string::npos;
      isRead_ = isClassList_ || line.rest.find("__objc_catlist") != std::string::npos;
    } else if (!isRead_) {
      return;
    } else if (line.tabs == 0 && line.first.size() == 16 && line.second.starts_with("0x")) {
      auto& list = isClassList_ ? classes : categories;
      entry_ = &list.emplace_back(Entry{line.second, line.rest, {}, {}, {}, {}, {}, {}});
      isMeta_ = isInner_ = false;
    } else if (line.tabs == 0) {
      readField(line);
    } else if (!isInner_) {
      readItem(line);
    }
  }

  std::vector<Entry> classes, categories;

 private:
  void readField(const Line& line) {
    if (line.first == "count") return;  // of the list of the field before it
    field_ = line.first;
    // A category of a class of this image is followed by that class, up to the category's lists.
    if (field_ == "cls") {
      entry_->cls = line.second;
      isInner_ = true;
    } else if (field_ == "instanceMethods" || field_ == "classMethods" || field_ == "protocols") {
      isInner_ = false;
      isMeta_ = field_ == "classMethods";
    } else if (isInner_) {
      return;
    } else if (field_ == "Meta") {
      isMeta_ = true;
    } else if (field_ == "superclass" && !isMeta_) {
      entry_->superclass = line.rest.empty() ? line.second : line.rest;
    } else if (field_ == "name" && !isMeta_) {
      entry_->name = line.rest;
    }
  }

  /// A line of a list: of methods, protocols, and others that are skipped.
  void readItem(const Line& line) {
    const bool isMethods = field_ == "baseMethods" || field_.ends_with("Methods");
    if (isMethods && line.tabs == 2 && line.first == "name") {
      auto& methods = isMeta_ ? entry_->classMethods : entry_->methods;
      methods.push_back(std::make_shared<ObjCMethod>(line.rest, "", isMeta_));
    } else if (isMethods && line.tabs == 2 && line.first == "types") {
      (isMeta_ ? entry_->classMethods : entry_->methods).back()->encoding = line.rest;
    } else if (field_ == "baseProtocols" || field_ == "protocols") {
      // A protocol is printed with its own methods; its name follows its number in the list.
      if (line.first.starts_with("list[")) isProtocol_ = !isMeta_;
      if (line.first == "name" && std::exchange(isProtocol_, false)) {
        entry_->protocols.push_back(line.rest);
      }
    }
  }

  Entry* entry_ = nullptr;
  std::string field_;
  bool isRead_ = false, isClassList_ = false, isMeta_ = false, isInner_ = false;
  bool isProtocol_ = false;
};

ObjCClass::Methods joined(ObjCClass::Methods methods, const ObjCClass::Methods& more) {
  methods.insert(methods.end(), more.begin(), more.end());
  return methods;
}

template <class List>
void prepend(List& list, const List& more) {
  list.insert(list.begin(), more.begin(), more.end());
}

}  // namespace

StaticClassParser::Result resultFromObjdump(const std::string& text) {
  Reader reader;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) reader.read(Line(line));

  StaticClassParser::Result result;
  std::map<std::string, Entry*> atAddress;
  for (Entry& each : reader.classes) atAddress[each.address] = &each;
  for (const Entry& each : reader.categories) {
    if (const auto cls = atAddress.find(each.cls); cls != atAddress.end()) {
      prepend(cls->second->methods, each.methods);
      prepend(cls->second->classMethods, each.classMethods);
      prepend(cls->second->protocols, each.protocols);
      continue;
    }
    const std::string rest = each.symbol.substr(kCategorySymbol.size());
    result.categories.push_back({rest.substr(0, rest.find("_$_")), each.name,
                                 joined(each.methods, each.classMethods), each.protocols});
  }
  for (const Entry& each : reader.classes) {
    auto cls = std::make_shared<ObjCClass>();
    cls->name = each.name;
    cls->methods = joined(each.methods, each.classMethods);
    cls->protocols = each.protocols;
    if (each.superclass.starts_with(kClassSymbol)) {
      cls->supercls = each.superclass.substr(kClassSymbol.size());
    } else if (const auto super = atAddress.find(each.superclass); super != atAddress.end()) {
      cls->supercls = super->second->name;
    }
    result.classes.push_back(std::move(cls));
  }
  return result;
}

}  // namespace tavlen
