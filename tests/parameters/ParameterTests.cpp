#include <gtest/gtest.h>

#include <limits>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/parameters/ParameterContainer.h"
#include "tests/support/TableFile.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

// The identifiers stand in users' documents, so they are repeated here in full.
TEST(Parameter, StoredIdentifiersNeverChange) {
  std::string identifiers;
  for (const std::string_view each : ParameterContainer::supportedTypes()) {
    identifiers += std::string(each) + " ";
  }
  EXPECT_EQ(identifiers,
            "Nil Code _ValueParameter<Int64> _ValueParameter<UInt64> _ValueParameter<Double> "
            "_ValueParameter<String> _ValueParameter<Bool> URL Date Color Data Image Class "
            "Selector Protocol Array Dictionary ");
}

struct KindCase {
  Parameter parameter;
  const char* json;
  const char* expression;
};

DictionaryParameter dictionaryOf(std::vector<std::pair<Parameter, Parameter>> pairs) {
  DictionaryParameter dictionary;
  for (auto& [key, value] : pairs)
    dictionary._items.push_back(DictionaryParameter::Pair::with(std::move(key), std::move(value)));
  return dictionary;
}

ArrayParameter arrayOf(std::vector<Parameter> items) {
  return ArrayParameter::withItems(std::move(items));
}

std::vector<KindCase> kindCases() {
  return {
      {NilParameter{}, R"({"type":"Nil"})", "null"},
      {CodeParameter{"a /* \xFF */"}, "",
       "a /* \xFF */"},  // not judged, so it cannot be stored either
      {CodeParameter{"x + \"y\""}, R"({"type":"Code","code":"x + \"y\""})", "x + \"y\""},
      {ValueParameter<std::int64_t>{-3}, R"({"type":"_ValueParameter<Int64>","value":-3})", "-3"},
      {ValueParameter<std::uint64_t>{18446744073709551615U},
       R"({"type":"_ValueParameter<UInt64>","value":18446744073709551615})",
       "18446744073709551615"},
      {ValueParameter<double>{1}, R"({"type":"_ValueParameter<Double>","value":1})", "1"},
      {ValueParameter<std::string>{"a/b"}, R"({"type":"_ValueParameter<String>","value":"a\/b"})",
       R"("a\/b")"},
      {ValueParameter<bool>{true}, R"({"type":"_ValueParameter<Bool>","value":true})", "true"},
      {URLParameter{"http://a.b/c"}, R"({"type":"URL","string":"http:\/\/a.b\/c"})",
       R"([NSURL URLWithString:"http:\/\/a.b\/c"])"},
      {DateParameter{Date::since1970(0)}, R"({"type":"Date","date":-978307200})",
       "[NSDate dateWithTimeIntervalSince1970:0.0]"},
      {ColorParameter::black, R"({"type":"Color","red":0,"green":0,"blue":0,"alpha":1})",
       "[UIColor colorWithRed:0.0 green:0.0 blue:0.0 alpha:1.0]"},
      {ColorParameter::withWhite(0.5, 1),
       R"({"type":"Color","red":0.5,"green":0.5,"blue":0.5,"alpha":1})",
       "[UIColor colorWithRed:0.5 green:0.5 blue:0.5 alpha:1.0]"},
      {DataParameter{"a.bin"}, R"({"type":"Data","filename":"a.bin"})",
       R"([[NSData alloc] initWithContentsOfFile:[resourcesPath stringByAppendingPathComponent:"a.bin"]])"},
      {ImageParameter{"a.png"}, R"({"type":"Image","filename":"a.png"})",
       R"([[UIImage alloc] initWithContentsOfFile:[resourcesPath stringByAppendingPathComponent:"a.png"]])"},
      {ClassParameter{"NSObject"}, R"({"type":"Class","name":"NSObject"})",
       R"(loadFunc('NSClassFromString', '@@')("NSObject"))"},
      {SelectorParameter{"init"}, R"({"type":"Selector","name":"init"})",
       R"(loadFunc('NSSelectorFromString', ':@')("init"))"},
      {ProtocolParameter{"NSCopying"}, R"({"type":"Protocol","name":"NSCopying"})",
       R"(loadFunc('NSProtocolFromString', '@@')("NSCopying"))"},
      {ArrayParameter{}, R"({"type":"Array","items":[]})", "@[]"},
      {arrayOf({NilParameter{}, CodeParameter{"x"}}),
       R"({"type":"Array","items":[{"type":"Nil"},{"type":"Code","code":"x"}]})",
       "@[[NSNull null], x]"},
      {DictionaryParameter{}, R"({"type":"Dictionary","items":[]})",
       "[NSDictionary dictionaryWithObjects:@[] forKeys:@[]]"},
      {arrayOf({arrayOf({dictionaryOf(
           {{ValueParameter<bool>{false}, NilParameter{}}, {NilParameter{}, arrayOf({})}})})}),
       R"({"type":"Array","items":[{"type":"Array","items":[{"type":"Dictionary","items":[)"
       R"({"key":{"type":"_ValueParameter<Bool>","value":false},"value":{"type":"Nil"}},)"
       R"({"key":{"type":"Nil"},"value":{"type":"Array","items":[]}}]}]}]})",
       "@[@[[NSDictionary dictionaryWithObjects:@[[NSNull null], @[]] forKeys:@[false, [NSNull "
       "null]]]]]"}};
}

TEST(Parameter, EveryKindIsStoredAndRendered) {
  for (const KindCase& c : kindCases()) {
    SCOPED_TRACE(c.expression);
    EXPECT_EQ(objsValue(c.parameter), c.expression);
    const ParameterContainer box{c.parameter};
    if (std::string_view(c.json).empty()) {
      EXPECT_THROW(encodeJSON(box), EncodingError);
      continue;
    }
    EXPECT_EQ(encodeJSON(box), c.json);
    EXPECT_EQ(decodeJSON<ParameterContainer>(c.json), box);
  }
}

TEST(Parameter, TheTypeKeyMayStandAnywhere) {
  const ParameterContainer expected{
      arrayOf({ColorParameter::white, arrayOf({ValueParameter<std::uint64_t>{7}})})};
  EXPECT_EQ(
      decodeJSON<ParameterContainer>(
          R"({"items":[{"red":1,"green":1,"alpha":1,"type":"Color","type":"Nil","blue":1},)"
          R"({"items":[{"value":7,"t\u0079pe":"_ValueParameter<UInt64>"}],"other":{"type":5},"type":"Array"}],)"
          R"("type":"Array"})"),
      expected);
}

TEST(Parameter, NonFiniteNumbersFailWhereTheyAreStored) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_THROW(objsValue(ValueParameter<double>{kInfinity}), EncodingError);
  const Parameter date = DateParameter{{-kInfinity}};
  const Parameter color =
      ColorParameter::withWhite(std::numeric_limits<double>::quiet_NaN(), kInfinity);
  EXPECT_EQ(objsValue(date), "[NSDate dateWithTimeIntervalSince1970:-inf]");
  EXPECT_EQ(objsValue(color), "[UIColor colorWithRed:nan green:nan blue:nan alpha:inf]");
  EXPECT_THROW(encodeJSON(ParameterContainer{date}), EncodingError);
  EXPECT_THROW(encodeJSON(ParameterContainer{color}), EncodingError);
}

TEST(Parameter, AFailingKeyIsReportedBeforeAFailingValue) {
  const DictionaryParameter dictionary = dictionaryOf(
      {{ValueParameter<std::string>{"fine"}, ValueParameter<std::string>{"value \xFF"}},
       {ValueParameter<std::string>{"key \xFF"}, NilParameter{}}});
  EXPECT_EQ(messageOf<EncodingError>([&] { objsValue(arrayOf({dictionary})); }),
            "Could not represent key \uFFFD as JSON");
}

TEST(Parameter, SaysWhatIsWrongWithAStoredOne) {
  for (const auto& row : tableFrom("parameter-errors.txt", 2)) {
    EXPECT_EQ(messageOf<DecodingError>([&] { decodeJSON<ParameterContainer>(row[0]); }), row[1]);
  }
}

TEST(Parameter, DeepNestingEndsInAnErrorAndTypesBehindTheirItemsCostNoMore) {
  // The type stands last, so it is looked for past all that nests inside. The limit is 512
  // containers, two a level.
  const auto nested = [](std::size_t levels) {
    std::string json = R"({"type":"Nil"})";
    for (std::size_t i = 0; i < levels; ++i) json = R"({"items":[)" + json + R"(],"type":"Array"})";
    return json;
  };
  EXPECT_NO_THROW(decodeJSON<ParameterContainer>(nested(255)));
  EXPECT_THROW(decodeJSON<ParameterContainer>(nested(256)), DecodingError);
}

}  // namespace
}  // namespace tavlen
