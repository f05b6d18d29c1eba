#include <limits>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/parameters/ParameterContainer.h"
#include "tests/support/TableFile.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

DictionaryParameter dictionaryOf(std::vector<std::pair<Parameter, Parameter>> pairs) {
  DictionaryParameter dictionary;
  for (auto& [key, value] : pairs)
    dictionary._items.push_back(DictionaryParameter::Pair::with(std::move(key), std::move(value)));
  return dictionary;
}

ArrayParameter arrayOf(std::vector<Parameter> items) {
  return ArrayParameter::withItems(std::move(items));
}

TEST(Parameter, EveryKindIsStoredAndRendered) {
  for (const auto& row : tableFrom("parameters.txt", 2)) {
    const auto box = decodeJSON<ParameterContainer>(row[0]);
    EXPECT_EQ(encodeJSON(box), row[0]);
    EXPECT_EQ(objsValue(box.value), row[1]);
  }
  EXPECT_EQ(objsValue(ColorParameter::black),
            "[UIColor colorWithRed:0.0 green:0.0 blue:0.0 alpha:1.0]");
  // Code is not judged, so not all of it can be stored.
  const Parameter code = CodeParameter{"a /* \xFF */"};
  EXPECT_EQ(objsValue(code), "a /* \xFF */");
  EXPECT_THROW(encodeJSON(ParameterContainer{code}), EncodingError);
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

}  // namespace
}  // namespace tavlen
