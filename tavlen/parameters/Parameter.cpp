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
void appendArrayLiteral(TextBuffer& out, const std::vector<Item>& items, BoxOf boxOf) {
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
  TextBuffer& out;

  void appendNumber(double value) const {
    out.advance(writeDescription(out.room(kMostNumberBytes), value));
  }

  void operator()(const NilParameter&) const { out += "null"; }

  void operator()(const CodeParameter& parameter) const { out += parameter.code; }

  template <class Value>
  void operator()(const ValueParameter<Value>& parameter) const {
    appendJSON(out, parameter.value);
  }

  void operator()(const URLParameter& parameter) const {
    out += "[NSURL URLWithString:";
    appendJSON(out, parameter.string);
    out += ']';
  }

  void operator()(const DateParameter& parameter) const {
    out += "[NSDate dateWithTimeIntervalSince1970:";
    appendNumber(parameter.date.secondsSince1970());
    out += ']';
  }

  void operator()(const ColorParameter& parameter) const {
    out += "[UIColor colorWithRed:";
    appendNumber(parameter.red);
    out += " green:";
    appendNumber(parameter.green);
    out += " blue:";
    appendNumber(parameter.blue);
    out += " alpha:";
    appendNumber(parameter.alpha);
    out += ']';
  }

  template <const FileObject& kObject>
  void operator()(const FileParameter<kObject>& parameter) const {
    out.append("[[").append(kObject.objectClass).append(" alloc] initWithContentsOfFile:");
    out += "[resourcesPath stringByAppendingPathComponent:";
    appendJSON(out, parameter.filename);
    out += "]]";
  }

  template <const RuntimeEntity& kEntity>
  void operator()(const RuntimeParameter<kEntity>& parameter) const {
    // The type encoding of the loaded function: its result, then its only argument, an object.
    out.append("loadFunc('").append(kEntity.fetchFunction);
    out.append("', '").append(kEntity.retEncoding).append("@')(");
    appendJSON(out, parameter.name);
    out += ')';
  }

  void operator()(const ArrayParameter& parameter) const {
    appendArrayLiteral(out, parameter._items, std::identity());
  }

  void operator()(const DictionaryParameter& parameter) const {
    // Render the keys first, so that an error in a key is reported before one in a value.
    std::string keys;
    TextBuffer keyBuffer(keys);
    appendArrayLiteral(keyBuffer, parameter._items, &DictionaryParameter::Pair::_key);
    out += "[NSDictionary dictionaryWithObjects:";
    appendArrayLiteral(out, parameter._items, &DictionaryParameter::Pair::_value);
    out.append(" forKeys:").append(keyBuffer.view()).append("]");
  }
};

}  // namespace

void appendOBJSValue(TextBuffer& out, const Parameter& parameter) {
  std::visit(ParameterExpression{out}, parameter);
}

std::string objsValue(const Parameter& parameter) {
  std::string text;
  TextBuffer out(text);
  appendOBJSValue(out, parameter);
  out.commit();
  return text;
}

}  // namespace tavlen
