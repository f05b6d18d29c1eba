#include <gmock/gmock.h>

#include <chrono>
#include <stdexcept>

#include "tavlen/introspection/types/JXTypeAggregate.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypeIDIgnoreName.h"
#include "tavlen/introspection/types/JXTypePointer.h"
#include "tests/support/TableFile.h"

namespace tavlen {

namespace {

using Strings = std::vector<std::string>;
using Types = JXTypeComplex::Types;

template <class Type>
const Type& as(const std::shared_ptr<JXType>& type) {
  return dynamic_cast<const Type&>(*type);
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i) out += text;
  return out;
}

/// What is wrong with the tree of `text`: its encoding, read again, must give the same tree. Empty
/// when nothing is.
std::string fault(std::string_view text) {
  JXTypeCursor cursor(text);
  JXRemoveQualifiers(cursor);
  const std::size_t begin = cursor.position();
  const auto type = JXTypeWithEncoding(cursor);
  if (type == nullptr) return text.empty() ? "" : "no type";
  if (cursor.position() != begin + type->encoding().size()) return "the cursor is elsewhere";
  if (text.substr(begin, type->encoding().size()) != type->encoding()) return "another encoding";
  if (type->description().empty()) return "nothing is printed";
  if (type->encoding().empty()) return "";
  const auto again = JXTypeForEncoding(type->encoding());
  return *type == *again ? "" : "read again: " + again->description();
}

TEST(JXType, ReadsAndPrints) {
  for (const auto& row : tableFrom("types.txt", 2)) {
    SCOPED_TRACE(row[0]);
    const auto type = JXTypeForEncoding(row[0]);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->encoding(), row.size() > 2 ? row[2] : row[0]);
    EXPECT_EQ(type->description(), row[1]);
    EXPECT_EQ(fault(row[0]), "");
  }
  EXPECT_EQ(JXTypeForEncoding(""), nullptr);
  EXPECT_EQ(JXTypeForEncoding("r")->encoding(), "");
  EXPECT_EQ(JXTypeForEncoding("r")->description(), "const void");
  for (const std::string& other : {std::string("\xFF"), std::string("\0", 1)}) {
    EXPECT_EQ(JXTypeForEncoding(other + "i")->encoding(), other);
    EXPECT_EQ(JXTypeForEncoding(other + "i")->description(), "void");
  }
}

TEST(JXType, StandsBeforeAndBehindADeclarator) {
  const struct {
    std::string_view encoding;
    std::string head, padding, tail;
  } cases[] = {{"i", "int", " ", ""},
               {"[2[3i]]", "int", " ", "[2][3]"},
               {"b5", "unsigned int", " ", ":5"},
               {"^?", "void (*", "", ")(void)"},
               {"@?", "void (^", "", ")(void)"},
               {"@\"<A><B>\"", "id<A, B>", " ", ""},
               {"@\"A\"", "A *", "", ""},
               {"r^i", "const int *", "", ""},
               {"{A}", "struct A", " ", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.encoding);
    const auto type = JXTypeForEncoding(c.encoding);
    EXPECT_EQ(type->descriptionWithPadding(false), (JXTypeDescription{c.head, c.tail}));
    EXPECT_EQ(type->descriptionWithPadding(true), (JXTypeDescription{c.head + c.padding, c.tail}));
  }
  EXPECT_EQ(JXTypeForEncoding("ri")->_descriptionWithPadding(true).head, "int ");
}

TEST(JXType, ShowsNamedStructsByNameAlone) {
  const struct {
    std::string_view encoding, text;
  } cases[] = {{"{A={B=i}}", "struct A"},
               {"^^(U=i)", "union U **"},
               {"[2^{A=i}]", "struct A *[2]"},
               {"{?={A=i}[2(?=(U=i)f)]}",
                "struct { struct A field1; union { union U field1; float field2; } field2[2]; }"}};
  for (const auto& c : cases) {
    EXPECT_EQ(JXTypeForEncoding(c.encoding)->description(JXTypeBodies::unnamed), c.text);
  }
}

TEST(JXType, KnowsItsParts) {
  const auto rect = JXTypeForEncoding("{R=\"a\"r[3@\"N<P>\"]\"b\"b7\"c\"^?}");
  const auto& structure = as<JXTypeStruct>(rect);
  EXPECT_EQ(structure.name(), "R");
  EXPECT_EQ(*structure.fieldNames(), (JXTypeComplex::FieldNames{"a", "b", "c"}));
  const auto& array = as<JXTypeArray>(structure.types()->at(0));
  EXPECT_EQ(array.count(), 3U);
  EXPECT_EQ(array.qualifiers(), JXTypeQualifiers::const_);
  EXPECT_EQ(as<JXTypeID>(array.type()).name(), "N");
  EXPECT_EQ(*as<JXTypeID>(array.type()).protocols(), JXTypeID::Protocols{"P"});
  auto bitField = std::dynamic_pointer_cast<JXTypeBitField>(structure.types()->at(1));
  bitField->setBits(9);
  EXPECT_EQ(bitField->bits(), 9U);
  EXPECT_EQ(bitField->encoding(), "b7");
  EXPECT_NE(rect->description().find("unsigned int b:9;"), std::string::npos);
  const auto& pointer = as<JXTypePointer>(structure.types()->at(2));
  EXPECT_TRUE(pointer.isFunction());
  EXPECT_EQ(pointer.type()->encoding(), "?");

  EXPECT_EQ(as<JXTypeStruct>(JXTypeForEncoding("{X}")).types(), nullptr);
  const auto empty = JXTypeForEncoding("{?=}");
  EXPECT_EQ(as<JXTypeStruct>(empty).name(), std::nullopt);
  EXPECT_TRUE(as<JXTypeStruct>(empty).types()->empty());
  EXPECT_EQ(as<JXTypeStruct>(empty).fieldNames(), nullptr);
  EXPECT_EQ(as<JXTypeID>(JXTypeForEncoding("@")).name(), std::nullopt);
  EXPECT_EQ(as<JXTypeID>(JXTypeForEncoding("@\"\"")).name(), "");
  EXPECT_EQ(as<JXTypeID>(JXTypeForEncoding("@\"A<\"")).protocols()->at(0), "");
  EXPECT_EQ(as<JXTypeID>(JXTypeForEncoding("@\"A\"")).protocols(), nullptr);
}

TEST(JXType, NodesKeepTheirText) {
  std::string text = "{A=\"m\"^{B=@\"C\"}}";
  std::shared_ptr<JXType> inner;
  {
    const auto tree = JXTypeForEncoding(text);
    inner = as<JXTypeStruct>(tree).types()->at(0);
  }
  text.assign(text.size(), 'x');
  EXPECT_EQ(inner->encoding(), "^{B=@\"C\"}");
  EXPECT_EQ(inner->description(), "struct B { C *field1; } *");
}

TEST(JXType, ReadsOneBehindTheOther) {
  JXTypeCursor cursor("Vv24@0:8r^{A}16");
  Strings printed;
  while (!cursor.isAtEnd()) {
    printed.push_back(JXTypeWithEncoding(cursor)->description());
    JXType::numberFromEncoding(cursor);
  }
  EXPECT_EQ(printed, (Strings{"oneway void", "id", "SEL", "const struct A *"}));
  EXPECT_EQ(JXTypeWithEncoding(cursor)->description(), "void");  // there is a text, but no more
  JXTypeCursor none("");
  EXPECT_EQ(JXTypeWithEncoding(none), nullptr);

  JXTypeCursor digits("12a");
  EXPECT_EQ(JXType::numberFromEncoding(digits), 12U);
  EXPECT_EQ(digits.character(), 'a');
  EXPECT_EQ(JXType::numberFromEncoding(digits), 0U);
  EXPECT_EQ(digits.position(), 2U);
  EXPECT_EQ(JXRemoveQualifiers(digits), JXTypeQualifiers::none);
  EXPECT_EQ(digits.position(), 2U);
}

TEST(JXType, NamesQualifiers) {
  const std::string_view characters = "jrnNoORVA";
  for (std::size_t i = 0; i < characters.size(); ++i) {
    EXPECT_EQ(JXTypeQualifierForEncoding(characters[i]), JXTypeQualifiers{1U << i});
  }
  EXPECT_EQ(JXTypeQualifierForEncoding('i'), JXTypeQualifiers::none);
  EXPECT_EQ(JXStringForTypeQualifiers(JXTypeQualifiers::none), std::nullopt);
  EXPECT_EQ(JXStringForTypeQualifiers(JXTypeQualifiers{2 | 128}), "const oneway");
}

TEST(JXType, IsBuilt) {
  const auto real = JXTypeBasic::initWithPrimitiveType(JXPrimitiveType::double_);
  const auto character = JXTypeBasic::initWithPrimitiveType(JXPrimitiveType::char_);
  const auto point = JXTypeStruct::initWithName("CGPoint", Types{real, real}, std::nullopt);
  const auto named = JXTypeStruct::initWithName("CGPoint", Types{real, real}, Strings{"x", "y"});
  const std::pair<std::shared_ptr<JXType>, std::string> cases[] = {
      {real, "d"},
      {JXTypeBasic::initWithPrimitiveType(JXPrimitiveType{99}), std::string(1, '\0')},
      {point, "{CGPoint=dd"},
      {named, "{CGPoint=\"x\"d\"y\"d"},
      {JXTypeStruct::initWithName("A", Types{real, real}, Strings{"x"}), "{A=\"x\"dd"},
      {JXTypeStruct::initWithName({}, {}, Strings{"x"}), "{?"},
      {JXTypeUnion::initWithName("U", Types{}, {}), "(U="},
      {JXTypePointer::initWithType(point, false), "^{CGPoint=dd"},
      {JXTypePointer::initWithType(JXTypeVoid(), true), "^?v"},
      {JXTypePointer::initWithType(character, true), "*"},
      {JXTypeArray::initWithCount(3, real), "[3d]"},
      {JXTypeBitField::initWithBits(12), "b12"},
      {JXTypeID::initWithName({}, {}, false), "@"},
      {JXTypeID::initWithName("N", Strings{"A", "B"}, false), "@\"N<A><B>\""},
      {JXTypeID::initWithName({}, Strings{"A"}, false), "@\"<A>\""},
      {JXTypeID::initWithName({}, Strings{}, false), "@\"\""},
      {JXTypeID::initWithName("N", Strings{"A"}, true), "@?"}};
  for (const auto& [type, encoding] : cases) EXPECT_EQ(type->encoding(), encoding);
  EXPECT_EQ(*point, *JXTypeForEncoding("{CGPoint=dd"));
  EXPECT_EQ(*named, *JXTypeForEncoding("{CGPoint=\"x\"d\"y\"d"));
  EXPECT_EQ(cases[4].first->description(), "struct A { double x; double field2; }");
  EXPECT_EQ(cases[9].first->description(), "void (*)(void)");
  EXPECT_EQ(cases[15].first->description(), "id");
  EXPECT_EQ(as<JXTypeID>(cases[16].first).name(), "N");
  EXPECT_EQ(as<JXTypeID>(cases[16].first).protocols()->at(0), "A");
  EXPECT_EQ(as<JXTypeStruct>(cases[5].first).fieldNames()->at(0), "x");

  EXPECT_THROW(JXTypePointer::initWithType(nullptr, false), std::invalid_argument);
  EXPECT_THROW(JXTypeStruct::initWithName("A", Types{nullptr}, {}), std::invalid_argument);
  std::shared_ptr<JXType> high = JXTypeVoid();
  for (unsigned i = 0; i < JXType::kMaximumDepth; ++i)
    high = JXTypePointer::initWithType(high, false);
  EXPECT_EQ(*high, *JXTypeForEncoding(high->encoding()));
  EXPECT_THROW(JXTypeArray::initWithCount(1, high), std::length_error);
}

TEST(JXType, TellsTreesApart) {
  const char* const encodings[] = {"i",        "ri",         "I",          "^i",   "^ri",  "[2i]",
                                   "[3i]",     "{A=i}",      "(A=i)",      "{A=i", "{A=}", "{A}",
                                   "{B=i}",    "{A=\"x\"i}", "{A=\"y\"i}", "@",    "@?",   "@\"A\"",
                                   "@\"<A>\"", "@\"A<\"",    "b1",         "b2",   "^?",   "^{A=i}",
                                   "^{A=I}",   "{A=^i^I}",   "{A=^I^i}"};
  for (const char* left : encodings) {
    for (const char* right : encodings) {
      EXPECT_EQ(*JXTypeForEncoding(left) == *JXTypeForEncoding(right), left == right)
          << left << " " << right;
    }
  }
}

TEST(JXType, StopsAtTheBoundAndGoesOn) {
  const std::size_t depth = JXType::kMaximumDepth;
  for (const std::string_view opening : {"^", "[1", "{X=", "(X="}) {
    SCOPED_TRACE(opening);
    for (const std::size_t levels : {depth - 1, depth, depth + 1}) {
      EXPECT_EQ(fault(repeated(opening, levels) + "*"), "");
    }
    // Just as many levels, and one more: then the innermost's first character is a basic type.
    const auto deepest = JXTypeForEncoding(repeated(opening, depth) + "i");
    EXPECT_NE(deepest->description().find("int"), std::string::npos);
    const auto deeper = JXTypeForEncoding(repeated(opening, depth + 1) + "i");
    EXPECT_NE(deeper->description().find("void"), std::string::npos);
    EXPECT_EQ(fault(repeated(opening, 100 * depth)), "");
  }
  // The reading goes on behind the bound: the last member is the outermost's.
  const std::string nest = "{X=" + repeated("{X=", depth) + repeated("}", depth - 1) + "f}";
  EXPECT_TRUE(JXTypeForEncoding(nest)->description().ends_with("float field2; }"));
}

TEST(JXType, LeavesTheFlagDown) {
  const auto read = [](std::string_view text) {
    const std::lock_guard lock(JXTypeIDIgnoreNameLock);
    JXTypeIDIgnoreName = true;
    const std::string printed = JXTypeForEncoding(text)->description();
    const bool isStillSet = JXTypeIDIgnoreName;
    JXTypeIDIgnoreName = false;
    return printed + (isStillSet ? " up" : " down");
  };
  EXPECT_EQ(JXTypeIDIgnoreNameLock.string(), "JXTypeIDIgnoreNameLock");
  EXPECT_EQ(read("@\"A\""), "id up");
  EXPECT_EQ(read("@?"), "void (^)(void) up");
  EXPECT_EQ(read("{P=\"x\"@\"y\"@}"), "struct P { id x; id y; } up");
  // A member before what is no quote is read again, to no end, and then objects have names.
  EXPECT_EQ(read("{P=\"x\"i1n\"@\"A\"\"y\"i}"), "struct P { int x; A *n; int y; } down");
  EXPECT_THAT(read("{P=\"z\"{R=@\"k\"}\"y\"i1n\"@\"A\"\"a\"(Q=@\"b)}c\"i}LONG)x"),
              testing::StartsWith("struct P { struct R { id field1;"));
}

TEST(JXType, AReadingWithAnEndDelimiterInAClassNameIsCorrected) {
  JXTypeCursor cursor("{=\"\"{=@\"}b\"\"}y");
  EXPECT_EQ(JXTypeWithEncoding(cursor)->description(),
            "struct { struct { id field1; void field2; } ; void ; }");
  EXPECT_EQ(cursor.character(), 'y');
}

/// Texts that a reader with a fault in its bounds takes hours, or gigabytes, for.
TEST(JXType, LargeTextsTakeTimeInProportion) {
  const std::size_t megabyte = 1 << 20;
  const auto begin = std::chrono::steady_clock::now();
  for (const std::string_view piece :
       {"i", "{X=", "^", "[1", "{P=\"a\"", "{P=\"a\"@\"b\"", "\"a\"@\"b\"", "@\"A<B>\"", "{?=", "b",
        "(Q=@\"b)", "\"a\"(Q=@\"b)", "{P=\"a\"{Q=@\"b}", "r", "{X=\"", "1", "{}",
        "\"x\"{P=\"a\"ii"}) {
    SCOPED_TRACE(piece);
    const std::string text = repeated(piece, megabyte / 8 / piece.size());
    EXPECT_EQ(fault("{X=" + text), "");
    EXPECT_EQ(fault("{X=" + text + repeated(")x}x", 1000)), "");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(1));
}

}  // namespace

}  // namespace tavlen
