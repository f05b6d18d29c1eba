#include "tavlen/parameters/Parameter.h"

#include <functional>
#include <string_view>
#include <vector>

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

namespace {

/// Appends the array literal of the parameters that `boxOf` returns for each of `items`. A nil is
/// written as the null object, because collections hold only objects.
template <class Item, class BoxOf>
void appendArrayLiteral(std::string& out, const std::vector<Item>& items, BoxOf boxOf) {
  out += "@[";
  std::string_view separator;
  for (const Item& item : items) {
    out += separator;
    separator = ", ";
    const ParameterContainer& box = std::invoke(boxOf, item);
    if (std::holds_alternative<NilParameter>(box.value)) {
      out += "[NSNull null]";
    } else {
      appendOBJSValue(out, box.value);
    }
  }
  out += ']';
}

/// Appends a parameter's expression; one overload for each kind.
struct ParameterExpression {
  std::string& out;

  void operator()(const NilParameter&) const { out += "null"; }

  void operator()(const CodeParameter& parameter) const { out += parameter.code; }

  template <class Value>
  void operator()(const ValueParameter<Value>& parameter) const {
    appendJSON(out, parameter.value);
  }

  void operator()(const URLParameter& parameter) const {
    out += "[NSURL URLWithString:";
    appendJSONString(out, parameter.string);
    out += ']';
  }

  void operator()(const DateParameter& parameter) const {
    out += "[NSDate dateWithTimeIntervalSince1970:";
    appendDescription(out, parameter.date.secondsSince1970());
    out += ']';
  }

  void operator()(const ColorParameter& parameter) const {
    out += "[UIColor colorWithRed:";
    appendDescription(out, parameter.red);
    out += " green:";
    appendDescription(out, parameter.green);
    out += " blue:";
    appendDescription(out, parameter.blue);
    out += " alpha:";
    appendDescription(out, parameter.alpha);
    out += ']';
  }

  template <const FileObject& kObject>
  void operator()(const FileParameter<kObject>& parameter) const {
    out.append("[[").append(kObject.objectClass).append(" alloc] initWithContentsOfFile:");
    out += "[resourcesPath stringByAppendingPathComponent:";
    appendJSONString(out, parameter.filename);
    out += "]]";
  }

  template <const RuntimeEntity& kEntity>
  void operator()(const RuntimeParameter<kEntity>& parameter) const {
    // The type encoding of the loaded function: its result, then its only argument, an object.
    out.append("loadFunc('").append(kEntity.fetchFunction);
    out.append("', '").append(kEntity.retEncoding).append("@')(");
    appendJSONString(out, parameter.name);
    out += ')';
  }

  void operator()(const ArrayParameter& parameter) const {
    appendArrayLiteral(out, parameter._items, std::identity());
  }

  void operator()(const DictionaryParameter& parameter) const {
    // Render the keys first, so that an error in a key is reported before one in a value.
    std::string keys;
    appendArrayLiteral(keys, parameter._items, &DictionaryParameter::Pair::_key);
    out += "[NSDictionary dictionaryWithObjects:";
    appendArrayLiteral(out, parameter._items, &DictionaryParameter::Pair::_value);
    out.append(" forKeys:").append(keys).append("]");
  }
};

}  // namespace

void appendOBJSValue(std::string& out, const Parameter& parameter) {
  std::visit(ParameterExpression{out}, parameter);
}

std::string objsValue(const Parameter& parameter) {
  std::string out;
  appendOBJSValue(out, parameter);
  return out;
}

}  // namespace tavlen
