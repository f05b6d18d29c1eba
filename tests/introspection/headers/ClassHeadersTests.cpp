#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <system_error>

#include "tavlen/bundles/Executable.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/introspection/headers/ClassHeaders.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {

namespace {

using Classes = ClassParser::Classes;
using Categories = std::vector<StaticClassParser::Category>;
using Headers = std::map<std::string, std::string>;

std::shared_ptr<ObjCMethod> method(const std::string& selector, const std::string& encoding,
                                   bool isClassMethod = false) {
  return std::make_shared<ObjCMethod>(selector, encoding, isClassMethod);
}

std::shared_ptr<ObjCClass> cls(const std::string& name, const ObjCClass::Methods& methods,
                               const std::string& superclass = "",
                               const std::vector<SharedText>& protocols = {}) {
  auto made = std::make_shared<ObjCClass>();
  made->name = name;
  made->methods = methods;
  if (!superclass.empty()) made->supercls = superclass;
  made->protocols = protocols;
  return made;
}

class ClassHeadersTest : public testing::Test {
 protected:
  const fs::path& path() const { return folder_.path(); }

  /// The files that are written, by name.
  Headers written(const Classes& classes, const Categories& categories = {}) const {
    const ClassHeaders::Written counts = ClassHeaders::write(classes, categories, path());
    EXPECT_EQ(counts.classes, classes.size());
    EXPECT_EQ(counts.categories, categories.size());
    Headers headers;
    for (const auto& entry : fs::directory_iterator(path())) {
      headers[entry.path().filename()] = readFile(entry.path());
    }
    EXPECT_EQ(headers.size(), classes.size() + categories.size() + 1);
    return headers;
  }

  /// Has clang check each header by itself, and all of them together.
  void expectThatHeadersCompile(const Headers& headers) const {
    std::vector<std::string> arguments = {"clang",   "-fsyntax-only",  "-x", "objective-c", "-Wall",
                                          "-Werror", "-ferror-limit=3"};
    std::string all;
    for (const auto& [name, text] : headers) {
      arguments.push_back(path() / name);
      all += "#import \"" + name + "\"\n";
    }
    arguments.push_back(folder_.write("all.m", all));
    Process clang("clang", arguments);
    clang.launch();
    EXPECT_NO_THROW(clang.waitUntilExit());
  }

 private:
  TemporaryFolder folder_{memoryFolder()};
};

TEST_F(ClassHeadersTest, DeclareWhatTheRecordsTell) {
  const Headers headers =
      written({cls("Base", {method("copy", "@16@0:8")}, "NSObject", {"NSCopying", "NSCoding"}),
               cls("View",
                   {method("frame", "{Rect={Point=dd}{Size=dd}}16@0:8"),
                    method("setFrame:in:", "v56@0:8{Rect={Point=dd}{Size=dd}}16@\"Zone<Q>\"48"),
                    method("with:", "@24@0:8@\"Base\"16", true)},
                   "Base")},
              {{"View", "Extra", {method("log", "Vv16@0:8")}, {"NSCopying"}},
               {"NSString", "Extra", {method("own", "@\"NSString\"16@0:8")}, {}}});
  EXPECT_EQ(headers.at("View.h"),
            "#import \"common-types.h\"\n"
            "#import \"Base.h\"\n"
            "\n"
            "@class Base, Zone;\n"
            "@protocol Q;\n"
            "\n"
            "@interface View : Base\n"
            "\n"
            "- (struct Rect)frame;\n"
            "- (void)setFrame:(struct Rect)arg1 in:(Zone<Q> *)arg2;\n"
            "+ (id)with:(Base *)arg1;\n"
            "\n"
            "@end\n");
  EXPECT_THAT(headers.at("Base.h"),
              testing::HasSubstr("@interface Base : NSObject <NSCopying, NSCoding>\n"));
  EXPECT_EQ(headers.at("View+Extra.h"),
            "#import \"common-types.h\"\n"
            "#import \"View.h\"\n"
            "\n"
            "@interface View (Extra) <NSCopying>\n"
            "\n"
            "- (oneway void)log;\n"
            "\n"
            "@end\n");
  EXPECT_THAT(headers.at("NSString+Extra.h"),
              testing::HasSubstr("\n@interface NSString (Extra)\n"));
  const std::string& common = headers.at("common-types.h");
  EXPECT_THAT(common, testing::HasSubstr("\nstruct Point {\n"
                                         "    double field1;\n"
                                         "    double field2;\n"
                                         "};\n"
                                         "\n"
                                         "struct Size {\n"
                                         "    double field1;\n"
                                         "    double field2;\n"
                                         "};\n"
                                         "\n"
                                         "struct Rect {\n"
                                         "    struct Point field1;\n"
                                         "    struct Size field2;\n"
                                         "};\n"));
  EXPECT_THAT(common, testing::EndsWith("\n__attribute__((objc_root_class))\n"
                                        "@interface NSObject\n"
                                        "@end\n"
                                        "\n"
                                        "__attribute__((objc_root_class))\n"
                                        "@interface NSString\n"
                                        "@end\n"));
  expectThatHeadersCompile(headers);
}

TEST_F(ClassHeadersTest, CompileForImages) {
  Classes classes;
  Categories categories;
  for (const char* name : {"Shapes", "Sketch", "Stickers"}) {
    const Executable image({}, paths().machoImages, name, false);
    const auto found = StaticClassParser().parseImage(image);
    classes.insert(classes.end(), found.classes.begin(), found.classes.end());
    categories.insert(categories.end(), found.categories.begin(), found.categories.end());
  }
  EXPECT_FALSE(categories.empty());
  expectThatHeadersCompile(written(classes, categories));
}

TEST_F(ClassHeadersTest, DeclareEveryType) {
  const struct {
    std::string encoding, declaration;
  } cases[] = {{"Vv", "oneway void"},
               {"v", "void"},
               {"jd", "_Complex double"},
               {"B", "BOOL"},
               {"D", "long double"},
               {"t", "__int128"},
               {"T", "unsigned __int128"},
               {"Ai", "_Atomic int"},
               {"r^r*", "const char **"},
               {"^[2^[3s]]", "short (*(*)[2])[3]"},
               {"[4i]", "int *"},
               {"^^?", "void (**)(void)"},
               {"@?", "id /* block */"},
               {"@\"<P>\"", "id<P>"},
               {"b40", "unsigned long long"},
               {"?", "UnknownType"},
               {"{?}", "UnknownType"},
               {"^{?}", "void *"},
               {"^[9999999999999999999i]", "void *"},
               {"{Opaque}", "struct Opaque"},
               {"^{Opaque=}", "struct Opaque *"},
               {"^[2{Absent}]", "struct Absent (*)[2]"},
               {"{std::pair<int, */>=ii}", "struct std_pair_int_"},
               {"(std::pair<int, */>=i)", "union std_pair_int__2"},
               {"{?=ii}", "UnnamedStruct"},
               {"^(?=if)", "UnnamedUnion *"},
               {"{?=\"x\"i\"int\"i\"x\"i}", "UnnamedStruct_2"},
               {"{Bits=b3b0b40b65}", "struct Bits"},
               {"{Loop={Loop}^{Loop}[2{Mate={Loop}}]}", "struct Loop"},
               {"{Huge=[16777216{Big=[8388608i]}]i[2?]}", "struct Huge"},
               {"{Parts=[2^?](?=c{?=s@\"Main.Part\"})^[2{Later}]}", "struct Parts"},
               {"{Later={Parts=}}", "struct Later"},
               {"{Parts=}", "struct Parts"}};
  ObjCClass::Methods methods;
  std::string expected;
  for (const auto& c : cases) {
    const std::string selector = "m" + std::to_string(methods.size());
    methods.push_back(method(selector, c.encoding + "@:"));
    expected.append("- (").append(c.declaration).append(")").append(selector).append(";\n");
  }
  const Headers headers = written({cls("A", methods), cls("UnknownType", {}, "UnnamedStruct")});
  EXPECT_THAT(headers.at("A.h"), testing::HasSubstr(expected));
  const std::string& common = headers.at("common-types.h");
  for (const char* part :
       {"@class Main_Part;\n", "struct Opaque;\n", "struct Absent {\n};\n",
        "struct std_pair_int_ {  /* std::pair<int, * /> */\n",
        "typedef struct {\n    int x;\n    int field2;\n    int x_2;\n} UnnamedStruct_2;\n",
        "    unsigned int field1:3;\n"
        "    unsigned int :0;\n"
        "    unsigned long long field3:40;\n"
        "    /* field4: unknown type */\n",
        "struct Loop {\n"
        "    /* field1: contains this type itself */\n"
        "    struct Loop *field2;\n"
        "    struct Mate field3[2];\n"
        "};\n",
        "    /* field1: too large */\n"
        "    int field2;\n"
        "    /* field3: unknown type */\n",
        "    void (*field1[2])(void);\n"
        "    union { char field1; struct { short field1; Main_Part *field2; } field2; } "
        "field2;\n"}) {
    EXPECT_THAT(common, testing::HasSubstr(part));
  }
  expectThatHeadersCompile(headers);
}

TEST_F(ClassHeadersTest, DeclareMethodsOfAnySelector) {
  const Headers headers = written(
      {cls("A", {method("a:b:", "v@:i"), method("a:", "v@:ic@"), method("::", "@@:i:"),
                 method("int:", "v@:nr*"), method("int:", "v@:@"), method("int:", "v@:@", true),
                 method(".cxx_destruct", "v16@0:8"), method("a:b", "v@:i"), method("", "v@:"),
                 method("__weak", "v@:"), method("bad", "v@:{*/"), method("*/\n};", "v@:")})});
  EXPECT_THAT(headers.at("A.h"), testing::HasSubstr("- (void)a:(int)arg1 b:(UnknownType)arg2;\n"
                                                    "- (void)a:(int)arg1 /* and c @ */;\n"
                                                    "- (id):(int)arg1 :(SEL)arg2;\n"
                                                    "- (void)int:(in const char *)arg1;\n"
                                                    "/* - int:, types \"v@:@\" */\n"
                                                    "+ (void)int:(id)arg1;\n"
                                                    "/* - .cxx_destruct, types \"v16@0:8\" */\n"
                                                    "/* - a:b, types \"v@:i\" */\n"
                                                    "/* - , types \"v@:\" */\n"
                                                    "/* - __weak, types \"v@:\" */\n"
                                                    "/* - bad, types \"v@:{* /\" */\n"
                                                    "/* - * /\\n};, types \"v@:\" */\n"));
  expectThatHeadersCompile(headers);
}

// No name leads out of the folder, breaks a header, or takes the file of another.
TEST_F(ClassHeadersTest, AcceptAnyNames) {
  const std::string nul("a\0b", 3);
  const Headers headers = written({cls("Foo", {}),
                                   cls("foo", {}, "Foo"),
                                   cls("FOO", {}, "foo"),
                                   cls("Foo", {}, "Foo"),
                                   cls("Foo_2", {}),
                                   cls("Main.Foo", {}, "Main.Foo"),
                                   cls("Main_Foo", {}, "Main.Foo"),
                                   cls("../../x", {}),
                                   cls("..", {}),
                                   cls("", {}, "größe\""),
                                   cls("größe\"", {}),
                                   cls("int", {}, "struct"),
                                   cls("BOOL", {}),
                                   cls("id", {}),
                                   cls("oneway", {}),
                                   cls("linux", {}),
                                   cls("__LINE__", {}),
                                   cls("a\\\n*/?\?/", {}),
                                   cls(nul, {}),
                                   cls("\xFF", {}),
                                   cls("1", {}),
                                   cls("common-types", {}),
                                   cls("A", {}, "B"),
                                   cls("B", {}, "C"),
                                   cls("C", {}, "B"),
                                   cls(std::string(300, 'x'), {}),
                                   cls(std::string(300, '-'), {}),
                                   cls("Adopts", {}, "", {"P", "P", "a.b", "int", ""})},
                                  {{"Foo", "", {}, {}},
                                   {"Foo", "/etc", {}, {}},
                                   {"Foo", ".etc", {}, {}},
                                   {"A.B", "C", {}, {}}});
  for (const auto& [name, text] :
       Headers{{"Foo.h", "\n@interface Foo\n"},
               {"foo-2.h", "\n@interface foo : Foo\n"},
               {"FOO-3.h", "#import \"foo-2.h\"\n\n@interface FOO : foo\n"},
               {"Foo_2.h", "\n@interface Foo_2\n"},
               {"Foo_3.h", "__attribute__((objc_runtime_name(\"Foo\")))\n@interface Foo_3 : Foo\n"},
               {"Main_Foo_2.h",
                "__attribute__((objc_root_class))\n@interface Main_Foo_2  /* inherits "
                "from itself */\n"},
               {"Main_Foo.h", "\n@interface Main_Foo : Main_Foo_2\n"},
               {"gr_e_.h", "(\"gr\\303\\266\\303\\237e\\042\")))  /* größe\" */\n"},
               {"int_.h", "\n@interface int_ : struct_\n"},
               {"Adopts.h", "\n@interface Adopts <P, a_b, int_, _>\n"},
               {"Foo+_etc.h", "\n@interface Foo (_etc)\n"},
               {"Foo+_etc_2.h", "\n@interface Foo (_etc_2)\n"},
               {"A_B+C.h", "\n@interface A_B (C)\n"}}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(headers.contains(name));
    EXPECT_THAT(headers.at(name), testing::HasSubstr(text));
  }
  EXPECT_FALSE(fs::exists(path() / "../../x.h"));
  expectThatHeadersCompile(headers);
}

TEST_F(ClassHeadersTest, StandHostileEncodings) {
  const auto repeated = [](std::string_view text, std::size_t count) {
    std::string out;
    while (count-- > 0) out += text;
    return out;
  };
  const Headers headers = written(
      {cls("A", {method("nested", repeated("{?=", 400) + "i" + repeated("}", 400) + "@:"),
                 method("pointers", repeated("^", 5000) + "i@:"),
                 method("arrays", "^" + repeated("[2", 200) + "i" + repeated("]", 200) + "@:"),
                 method("wide", "{W=" + repeated("^{W=ii}i", 12'000) + "}@:"),
                 method("times", "^{?=[16777216{?=[16777216{?=[16777216{?=[16777216i]}]}]}]}@:"),
                 method("pointed", "{X=[16777216{Y=[16777216{Z=[16777216^{O}]}]}]}@:"),
                 method("bytes", "{\xFF\x01\"=\"\n\"@\"\xFF<\n>\"\"/*\"i}@:")})});
  expectThatHeadersCompile(headers);
}

TEST_F(ClassHeadersTest, ReplaceFilesOfTheFolderOnly) {
  TemporaryFolder other;
  const fs::path target = other.write("target", "kept");
  fs::create_symlink(target, path() / "A.h");
  const Headers first = written({cls("A", {}), cls("B", {})});
  EXPECT_EQ(readFile(target), "kept");
  EXPECT_FALSE(fs::is_symlink(path() / "A.h"));
  EXPECT_EQ(written({cls("A", {}), cls("B", {})}), first);

  const fs::path linked = other.path() / "linked";
  fs::create_directory_symlink(path(), linked);
  EXPECT_NO_THROW(ClassHeaders::write({cls("C", {})}, {}, linked));
  EXPECT_TRUE(fs::exists(path() / "C.h"));
  fs::create_directories(other.path() / "new/B.h");
  EXPECT_THAT(messageOf<std::system_error>(
                  [&] { ClassHeaders::write({cls("B", {})}, {}, other.path() / "new"); }),
              testing::HasSubstr(other.path() / "new/B.h"));
  EXPECT_THAT(messageOf<std::system_error>([&] { ClassHeaders::write({}, {}, target / "below"); }),
              testing::HasSubstr(target / "below"));
}

}  // namespace

}  // namespace tavlen
