#include <cmath>
#include <limits>

#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"
#include "tests/foundation/plist/PropertyLists.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WideText.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using Index = PropertyList::Index;

std::string toXML(const PropertyList& list) {
  return writePropertyList(list, PropertyListFormat::xml);
}

TEST(XMLPropertyList, hasItsBytes) {
  using Limits = std::numeric_limits<double>;
  PropertyList list;
  Members root;
  const auto add = [&](const char* name, const PropertyList::Node& value) {
    const Index key = list.add(std::string(name));
    root.push_back({key, list.add(value)});
  };
  const auto addArray = [&](const char* name, const std::vector<PropertyList::Node>& nodes) {
    Indices elements;
    for (const auto& node : nodes) elements.push_back(list.add(node));
    add(name, PropertyList::Array{elements});
  };
  add("z", "<&>\"'\r\n"s);
  addArray("array", {true, false, 1e16, 2.0, -0.5});
  add("again", std::int64_t{1});
  add("again", std::numeric_limits<std::uint64_t>::max());
  add("data", PropertyList::Data{std::string(54, '\xFF')});
  add("date", Date{-0.5});
  add("dict", PropertyList::Dictionary{Members{{list.add("k"s), list.add(PropertyList::Array{})}}});
  add("empty", PropertyList::Dictionary{});
  add("uid", PropertyList::UID{7});
  addArray("special", {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                       std::numeric_limits<std::int64_t>::min()});
  list.setRoot(list.add(PropertyList::Dictionary{root}));
  const std::string text = toXML(list);
  EXPECT_EQ(text, readFile(paths().testData + "/plist/every-kind.xml"));
  const PropertyList again = readPropertyList(text);
  EXPECT_EQ(toXML(again), text);
  EXPECT_EQ(again.kind(again.find(again.root(), "uid").value()), PropertyList::Kind::uid);
}

TEST(XMLPropertyList, scalarsHaveTheirTexts) {
  for (const auto& row : tableFrom("plist/scalars.txt", 3)) {
    SCOPED_TRACE(testing::PrintToString(row));
    const std::string& text = row[1];
    if (row[0] == "integer") {
      const auto value = integerFromXML(text);
      ASSERT_EQ(value.has_value(), row[2] != "none");
      if (!value) continue;
      EXPECT_EQ(std::visit([](auto number) { return std::to_string(number); }, *value), row[2]);
    } else if (row[2] == "none") {
      EXPECT_FALSE(row[0] == "real" ? realFromXML(text).has_value()
                                    : dateFromXML(text).has_value());
    } else if (row[0] == "real") {
      EXPECT_EQ(realFromXML(text), std::strtod(row[2].c_str(), nullptr));
    } else {
      const Date date{std::strtod(row[2].c_str(), nullptr)};
      EXPECT_EQ(dateFromXML(text), date);
      EXPECT_EQ(xmlFromDate(date), text);
    }
  }
  EXPECT_EQ(integerFromXML(" \n+ 12"), XMLInteger(std::int64_t{12}));
  EXPECT_TRUE(std::isnan(realFromXML("NaN").value()));
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double out : {-63145526401.0, 1e12, 1e300, kInfinity, -kInfinity}) {
    EXPECT_EQ(xmlFromDate(Date{out}), std::nullopt) << out;
  }
  EXPECT_EQ(xmlFromDate(Date{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
}

TEST(XMLPropertyList, readsWhatOthersWrite) {
  const auto text = [](std::string_view bytes) {
    const PropertyList list = readPropertyList(bytes);
    return std::string(list.string(list.root()));
  };
  EXPECT_EQ(text(plist("<string/>")), "");
  EXPECT_EQ(text(plist(" <!-- c --><string> a<!-- c --><![CDATA[<&]]>&amp;&#x1F600;\n</string>\n")),
            " a<&&😀\n");
  EXPECT_EQ(text("\n" + plist("<string>  </string>")), "  ");
  EXPECT_EQ(text("\xEF\xBB\xBF<?xml version='1.0'?>" + plist("<string>é</string>")), "é");
  EXPECT_EQ(text("<?xml version='1.0' encoding='ISO-8859-1'?>" + plist("<string>\xE9</string>")),
            "é");
  const std::string ascii =
      "<?xml version=\"1.0\" encoding = 'UTF-16' standalone='no' ?>" + plist("<string>z</string>");
  const std::u16string units(ascii.begin(), ascii.end());
  const std::u32string scalars(ascii.begin(), ascii.end());
  for (const auto& [mark, bytes] : {std::pair("\xFF\xFE"s, bytesOf<char16_t>(units, false)),
                                    std::pair("\xFE\xFF"s, bytesOf<char16_t>(units, true)),
                                    std::pair("\xFF\xFE\0\0"s, bytesOf<char32_t>(scalars, false)),
                                    std::pair("\0\0\xFE\xFF"s, bytesOf<char32_t>(scalars, true))}) {
    EXPECT_EQ(text(bytes) + text(mark + bytes), "zz") << mark;
  }

  const PropertyList list = readPropertyList(plist(
      "<dict><key>a</key><data> AA\n==\t</data><key>a</key><dict><key>CF$UID</key>"
      "<integer>-1</integer></dict><key>b</key><dict><key>CF$UID</key><string>1</string></dict>"
      "<key>c</key><dict><key>CF$UID</key><integer>1</integer><key>d</key><true></true></dict>"
      "</dict>"));
  for (const char* key : {"a", "b", "c"}) {
    EXPECT_EQ(list.kind(list.find(list.root(), key).value()), PropertyList::Kind::dictionary)
        << key;
  }
}

TEST(XMLPropertyList, refusesWhatIsNone) {
  for (const std::string& bytes :
       {""s, " "s, "hello"s, "{ a = b; }"s, "bplist"s, "bplist00"s, "<"s, "<?xml version='1.0'?>"s,
        "<dict/>"s, "<html><dict/></html>"s, "<plist/>"s, "<plist><true/>"s, plist("<true/>") + "x",
        plist("<true/>") + plist("<true/>")}) {
    EXPECT_NE(refusal(bytes), "") << bytes;
  }
  for (const auto& row : tableFrom("plist/refused.txt", 1)) {
    EXPECT_NE(refusal(plist(row[0])), "") << row[0];
  }
  for (const std::string text : {"", "<string>\xFF</string>", "<string>\x01</string>"}) {
    EXPECT_NE(refusal(plist(text)), "") << text;
  }
  EXPECT_EQ(refusal("<plist>\n<dict>\n<true/></dict></plist>"), "Line 3: a value without a key");

  const std::string good = plist("<dict><key>a</key><array><data>AAAA</data></array></dict>");
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_NE(refusal(std::string_view(good).substr(0, size)), "") << size;
  }
}

TEST(XMLPropertyList, opensNothingAndExpandsNothing) {
  const auto withEntities = [](const std::string& entities, const std::string& body) {
    return "<!DOCTYPE plist [" + entities + "]>" + body;
  };
  EXPECT_NE(refusal(withEntities("<!ENTITY a 'x'>", plist("<string>&a;</string>"))), "");
  EXPECT_NE(refusal(withEntities("<!ENTITY a SYSTEM 'file:///etc/hostname'>",
                                 plist("<string>&a;</string>"))),
            "");
  EXPECT_EQ(refusal("<!DOCTYPE plist SYSTEM 'file:///dev/nonexistent'>" + plist("<true/>")), "");
  std::string laughs = "<!ENTITY e0 'xxxxxxxxxx'>";
  for (char i = '1'; i <= '9'; ++i) {
    laughs += "<!ENTITY e"s + i + " '";
    for (int j = 0; j < 10; ++j) laughs += "&e"s + static_cast<char>(i - 1) + ";";
    laughs += "'>";
  }
  EXPECT_NE(refusal(withEntities(laughs, plist("<string>&e9;</string>"))), "");
  EXPECT_NE(refusal(withEntities(laughs, "<plist version='&e9;'><true/></plist>")), "");
}

/// The XML library takes more than linear time for many attributes and for many entities.
TEST(XMLPropertyList, refusesWhatIsSlowToParse) {
  const auto many = [](const std::string& before, const std::string& behind) {
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += before + std::to_string(i) + behind;
    return text;
  };
  const std::string attributes = many(" a", "='x'");
  const std::string entities = many("<!ENTITY e", " 'x'>");
  const std::string subset = "<!DOCTYPE plist [" + entities + "]>" + plist("<true/>");
  const std::string wideTag = plist("<array" + attributes + "/>");
  const std::string hidden = "<?xml version='1.0' encoding='IBM037'?>" + plist("<true/>");
  const std::u16string wide(wideTag.begin(), wideTag.end());
  const std::pair<std::string, const char*> rows[] = {
      {subset, "A tag is too long."},
      {"<!DOCTYPE plist []>" + plist("<true/>"), "Its document type contains declarations."},
      {"<!DOCTYPE plist SYSTEM '>' [" + entities, "A tag is too long."},
      {"<!DOCTYPE plist '" + subset, "A tag has too many attributes."},
      {plist("<!ENTITY a 'x'><true/>"), "It contains a declaration."},
      {wideTag, "A tag has too many attributes."},
      {"\xFF\xFE" + bytesOf<char16_t>(wide, false), "A tag has too many attributes."},
      {plist("<!-- \" --><array" + attributes + "/>"), "A tag has too many attributes."},
      {plist("<![CDATA[<!--]]><array" + attributes + "/>"), "A tag has too many attributes."},
      {"<?a <!-- ?>" + wideTag, "A tag has too many attributes."},
      {plist("<true" + std::string(2000, ' ') + "/>"), "A tag is too long."},
      {plist("<array>" + many("<string xmlns:a", "='u'/>") + "</array>"),
       "It has too many attributes or instructions."},
      {many("<?a", "?>") + plist("<true/>"), "It has too many attributes or instructions."},
      {plist("<true <!-- /> -->"), "A tag is not closed."},
      {plist("<!-- "), "\"<!--\" is not closed."},
      {hidden, "Its XML declaration is malformed or names an unsupported encoding."},
      {"<?xml version='\" encoding='IBM037'?>" + plist("<true/>"),
       "Its XML declaration is malformed or names an unsupported encoding."},
      {plist(std::string_view("a\0b", 3)), "It contains the character U+0000."},
      {"\xFF\xFE<", "The text is malformed in its encoding."}};
  for (const auto& [bytes, reason] : rows) {
    EXPECT_EQ(refusal(bytes), reason) << bytes.substr(0, 80);
  }
  for (const std::string& harmless :
       {"<!DOCTYPE plist PUBLIC '-//Apple//DTD PLIST 1.0//EN' \"a>b\">" + plist("<true/>"),
        plist("<!-- <!ENTITY [ " + attributes + "--><true/>"),
        "<?a <!DOCTYPE [ ?>" + plist("<string><![CDATA[<a" + attributes + "]]></string>"),
        "<plist version='1.0' a='>'><true/></plist>"s}) {
    EXPECT_EQ(refusal(harmless), "") << harmless.substr(0, 80);
  }
}

TEST(XMLPropertyList, depthAndSizeAreBounded) {
  const auto nested = [](std::size_t depth) {
    PropertyList list;
    for (Index i = 1; i < depth; ++i) list.add(PropertyList::Array{Indices{i}});
    list.add(PropertyList::Array{Indices{static_cast<Index>(depth)}});
    list.add("leaf"s);
    return list;
  };
  EXPECT_EQ(toXML(readPropertyList(toXML(nested(250)))), toXML(nested(250)));
  EXPECT_THROW(toXML(nested(251)), EncodingError);
  std::string deep;
  for (int i = 0; i < 1'000'000; ++i) deep += "<array>";
  EXPECT_NE(refusal("<plist>" + deep), "");

  PropertyList cycle;
  cycle.add(PropertyList::Array{Indices{0, 0}});
  EXPECT_THROW(toXML(cycle), EncodingError);
  PropertyList bomb;
  for (Index i = 1; i < 40; ++i) bomb.add(PropertyList::Array{Indices{i, i}});
  bomb.add(PropertyList::Array{});
  EXPECT_THROW(toXML(bomb), EncodingError);

  for (const std::string& text : {"\0"s, "a\x1F"s, "\xEF\xBF\xBF"s, "\xFF"s}) {
    PropertyList list;
    list.add(text);
    EXPECT_THROW(toXML(list), EncodingError) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace tavlen
