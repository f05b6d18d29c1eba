#include "tavlen/introspection/classes/DynamicClassParser.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <objc/runtime.h>
#include <sys/stat.h>

#include <stdexcept>

#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/ExecutablePath.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/tasks/ScopedProgress.h"
#include "tavlen/introspection/classes/RuntimeClasses.h"
#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tests/introspection/classes/ClassText.h"
#include "tests/support/LogLines.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"

namespace {
std::function<void(std::string)>& sampleCallback() {
  static std::function<void(std::string)> callback;
  return callback;
}
}  // namespace
/// Called by the image of initialisers.
extern "C" void tavlenSampleCallback(const char* initialiser);
void tavlenSampleCallback(const char* initialiser) {
  if (sampleCallback()) sampleCallback()(initialiser);
}

namespace tavlen {
namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

std::string pathOfDefinition(const char* className) {
  Dl_info info;
  return ::dladdr(objc_lookUpClass(className), &info) != 0 ? info.dli_fname : "";
}

Lines namesOf(const ClassParser::Classes& classes) {
  Lines names;
  for (const auto& each : classes) names.push_back(each->name.str());
  return names;
}

class DynamicClassParserTest : public testing::Test {
 protected:
  ClassParser::Classes parse(const fs::path& path, bool shouldDlopen = true) {
    auto classes = parser_.parseClassesAtPath(path, shouldDlopen);
    EXPECT_TRUE(classes.has_value()) << path;
    return std::move(classes).value_or(ClassParser::Classes());
  }
  Class classNamed(const char* name) {
    Class cls = objc_lookUpClass(name);
    EXPECT_NE(cls, nullptr) << name;
    return cls;
  }
  Class madeClass(const char* name, Class super) {
    Class cls = objc_allocateClassPair(super, name, 0);
    objc_registerClassPair(cls);
    return cls;
  }
  IMP anyCode() {
    return class_getMethodImplementation(classNamed("SampleRoot"), sel_registerName("tag"));
  }

  DynamicClassParser parser_;
  LogLines messages_;
};

TEST_F(DynamicClassParserTest, ReadsWhatAnImageDefines) {
  const std::string image = paths().classesImage;
  std::string text;
  for (const auto& each : parse(image)) text += textOf(*each);
  // The run time gives the methods of a category first, each list from its end; it lists the
  // instance methods of a root class as class methods, too, which no other class shows.
  EXPECT_EQ(text, R"(class SampleRoot
- tag i16@0:8
+ tag i16@0:8
+ make @16@0:8
class SamplePicture
super SampleRoot )" + image +
                      R"(
protocol SampleDrawing
protocol SampleNaming
- name r*16@0:8
- name r*16@0:8
- drawIn:at: v40@0:8^{Box={Point=dd}C}16{Point=dd}24
+ name @16@0:8
class SampleBare
super SamplePicture )" +
                      image + R"(
class SampleAlien
super Object )" + pathOfDefinition("Object") +
                      R"(
- boxOf: {Box={Point=dd}C}24@0:8O@16
)");
  EXPECT_THAT(messages_.take(),
              ElementsAre("dlopening " + image + "!", "Enumerating classes of " + image));
}

TEST_F(DynamicClassParserTest, ReadsAClassOnce) {
  const auto first = parse(paths().classesImage);
  messages_.take();
  const TemporaryFolder folder;
  fs::create_symlink(paths().classesImage, folder.path() / "link.so");
  EXPECT_EQ(parse(folder.path() / "link.so", false), first);  // the same records
  EXPECT_EQ(messages_.take().size(), 1U);                     // and nothing is loaded
  EXPECT_EQ(parser_.cache().size(), 4U);
  EXPECT_EQ(parser_.cache().at("SampleBare"), first.at(2));
  EXPECT_NE(DynamicClassParser::sharedParser().parseClass(classNamed("SampleBare")), first.at(2));

  Class made = madeClass("MadeOnce", nullptr);
  const auto record = parser_.parseClass(made);
  class_addMethod(made, sel_registerName("late"), anyCode(), "v16@0:8");
  EXPECT_EQ(parser_.parseClass(made), record);
  EXPECT_EQ(textOf(*record), "class MadeOnce\n");
  EXPECT_EQ(parser_.methodsOfClass(made, true).size(), 1U);
}

TEST_F(DynamicClassParserTest, GivesNothingForWhatDoesNotLoad) {
  const TemporaryFolder folder;
  const auto text = folder.write("text.so", std::string(100, 'x'));
  const auto pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const std::vector<std::pair<fs::path, std::string>> cases = {
      {folder.path() / "missing.so", "No such file or directory"},
      {text, "invalid ELF header"},
      {pipe, "not a regular file"},
      {folder.path(), "not a regular file"},
      {"", "not a regular file"},
  };
  for (const auto& [path, reason] : cases) {
    SCOPED_TRACE(path);
    EXPECT_EQ(parser_.parseClassesAtPath(path, true), std::nullopt);
    EXPECT_THAT(messages_.take(),
                ElementsAre("dlopening " + path.string() + "!",
                            testing::AllOf(testing::StartsWith("dlopen encountered error: "),
                                           testing::HasSubstr(reason))));
    EXPECT_THAT(parse(path, false), testing::IsEmpty());
    messages_.take();
  }
}

TEST_F(DynamicClassParserTest, AnImageMayHaveNoClasses) {
  ::dlopen("/no/such/image", RTLD_LAZY);  // whose error is not that of the next
  EXPECT_THAT(parse(paths().noClassesImage), testing::IsEmpty());
  EXPECT_NE(::dlopen(paths().noClassesImage.c_str(), RTLD_LAZY | RTLD_NOLOAD), nullptr);
}

TEST_F(DynamicClassParserTest, KnowsTheProgram) {
  const auto classes = parse(executablePath(), false);
  ASSERT_THAT(namesOf(classes), ElementsAre("SampleOfProgram", "SampleBelowProgram"));
  EXPECT_EQ(classes[1]->superclassPath, executablePath().string());
}

TEST_F(DynamicClassParserTest, InitialisersMayAsk) {
  std::vector<std::pair<std::string, ClassParser::Classes>> answers;
  sampleCallback() = [&](const std::string& initialiser) {
    answers.emplace_back(initialiser, parse(paths().classesImage));
  };
  const auto classes = parse(paths().initialisersImage);
  sampleCallback() = nullptr;
  EXPECT_THAT(namesOf(classes), ElementsAre("SampleLoaded"));
  const auto expected = parse(paths().classesImage);
  EXPECT_THAT(answers, testing::UnorderedElementsAre(testing::Pair("load", expected),
                                                     testing::Pair("constructor", expected)));
}

TEST_F(DynamicClassParserTest, ClassesMadeAtRunTimeHaveNoImage) {
  parse(paths().classesImage);
  Class made = madeClass("Made\xFF", classNamed("SampleRoot"));
  Class below = madeClass("Made\xFE", made);
  class_addMethod(made, sel_registerName("typeless"), anyCode(), "v");
  class_addMethod(made, sel_registerName("odd\xC3:"), anyCode(), "{\x80=}");
  unsigned count = 0;
  Method* methods = class_copyMethodList(made, &count);
  for (Method* each = methods; each != methods + count; ++each) {
    // The second field. Nothing else makes a method without types.
    auto& types = reinterpret_cast<const char**>(*each)[1];
    if (*types == 'v') types = nullptr;
  }
  std::free(methods);
  EXPECT_EQ(textOf(*parser_.parseClass(made)), "class Made\xEF\xBF\xBD\nsuper SampleRoot " +
                                                   paths().classesImage +
                                                   "\n- odd\xEF\xBF\xBD: {\xEF\xBF\xBD=}\n");
  EXPECT_EQ(textOf(*parser_.parseClass(below)),
            "class Made\xEF\xBF\xBD\nsuper Made\xEF\xBF\xBD -\n");
  EXPECT_EQ(namesOf(parse(paths().classesImage)).size(), 4U);
}

TEST_F(DynamicClassParserTest, ProgressHasAUnitAClass) {
  parse(paths().classesImage);
  const auto top = Progress::discrete(2);
  std::vector<double> fractions;
  {
    const ScopedProgress current(top, 2);
    objc_enumerateClassesOfImage(paths().classesImage, [&](Class) {
      EXPECT_EQ(Progress::current()->totalUnitCount(), 4);
      fractions.push_back(top->fractionCompleted());
    });
  }
  EXPECT_THAT(fractions, ElementsAre(0, 0.25, 0.5, 0.75));
  EXPECT_TRUE(top->isFinished());

  const auto parent = Progress::discrete(2);
  parent->becomeCurrent(1);
  objc_enumerateClassesOfImage(paths().noClassesImage, [](Class) { FAIL(); });
  const auto child = Progress::make(1);  // the first: nothing was made for no class
  parent->resignCurrent();
  EXPECT_EQ(parent->completedUnitCount(), 0);
  child->setCompletedUnitCount(1);
  EXPECT_EQ(parent->completedUnitCount(), 1);
}

TEST_F(DynamicClassParserTest, ServesExecutables) {
  const TemporaryFolder folder;
  const ClassParser& parser = parser_;
  const auto parent = Progress::discrete(3);
  const auto executable = [](const fs::path& image) {
    return Executable({}, image.parent_path(), image.filename(), false);
  };
  fs::copy_file(paths().noClassesImage, folder.path() / "fresh.so");
  const Executable fresh = executable(folder.path() / "fresh.so");
  EXPECT_THAT(parser.parse(fresh, parent), testing::IsEmpty());
  EXPECT_EQ(messages_.take().size(), 2U);
  EXPECT_THAT(parser.parse(fresh), testing::IsEmpty());
  EXPECT_EQ(messages_.take().size(), 1U);  // it is not loaded again
  EXPECT_EQ(parser.parse(executable(paths().classesImage), parent), parse(paths().classesImage));
  EXPECT_EQ(parent->completedUnitCount(), 2);
  try {
    parser.parse(executable(folder.path() / "missing.so"), parent);
    FAIL();
  } catch (const DynamicClassParser::Error& error) {
    EXPECT_EQ(error.localizationKey(), "dynamic_class_parser.error.failed");
    EXPECT_STREQ(error.what(), "Dynamic dump failed");
  }
  EXPECT_EQ(Progress::current(), nullptr);
}

TEST_F(DynamicClassParserTest, ThreadsShareRecords) {
  std::array<ClassParser::Classes, 4> results;
  inThreads(4, [&](int thread) {
    auto& result = results.at(static_cast<std::size_t>(thread));
    const auto& parser = DynamicClassParser::sharedParser();
    for (int i = 0; i < 20; ++i) {
      result = parser.parseClassesAtPath(paths().classesImage, true).value();
      EXPECT_EQ(parser.parseClass(objc_lookUpClass("SampleBare")), result.at(2));
      EXPECT_GE(parser.cache().size(), result.size());
    }
  });
  for (const auto& each : results) EXPECT_EQ(each, results.front());
}

// Next to the other tests of threads, which alone are built for the thread sanitizer.
TEST(JXType, IsReadByManyThreads) {
  // Each struct has an object before another named member, so each is read twice.
  std::string text = "i";
  for (int i = 0; i < 40; ++i) text = "{P=\"a\"" + text + "\"b\"@\"c\"i}";
  text += "@\"NSString\"";
  const std::string expected = JXTypeForEncoding(text)->description();
  inThreads(4, [&](int) {
    for (int i = 0; i < 50; ++i) {
      JXTypeCursor cursor(text);
      EXPECT_EQ(JXTypeWithEncoding(cursor)->description(), expected);
      EXPECT_EQ(JXTypeWithEncoding(cursor)->description(), "NSString *");
    }
  });
}

const std::string kInstance = "-\xC2\xA0";
const StyledText::Color kType{1, 0, 0, 1};
const StyledText::Color kForeground{0, 0, 0, 0.5};
const StyledText::Font kFont{"Menlo", 11.5};

TEST(ObjCMethod, ReadsAsADeclarationOnOneLine) {
  for (const auto& row : tableFrom("methods.txt", 3)) {
    ObjCMethod method(row[0], row[1], false);
    EXPECT_EQ(method.description(), kInstance + row[2]);
    EXPECT_EQ(method.description(kType, kForeground, kFont).plain(), kInstance + row[2]);
    method.isClassMethod = true;
    EXPECT_EQ(method.description(), "+\xC2\xA0" + row[2]);
  }
}

TEST(ObjCMethod, NamesStructsInsteadOfShowingThem) {
  const ObjCMethod method("a:", "{A=i}@:^{B=d}", false);
  EXPECT_EQ(method.description(JXTypeBodies::unnamed), kInstance + " (struct A)a:(struct B *)");
}

TEST(ObjCMethod, ColoursItsTypes) {
  const ObjCMethod method("a:b:", "v@:i@", false);
  using Runs = std::vector<StyledText::Run>;
  EXPECT_EQ(method.description(kType, kForeground, kFont).runs(),
            (Runs{{kInstance + " (", kForeground, kFont},
                  {"void", kType, kFont},
                  {")a:(", kForeground, kFont},
                  {"int", kType, kFont},
                  {") b:(", kForeground, kFont},
                  {"id", kType, kFont},
                  {")", kForeground, kFont}}));
  EXPECT_EQ(ObjCMethod("a", "", true).description(kType, kForeground, kFont).runs(),
            (Runs{{"+\xC2\xA0"
                   "a",
                   kForeground, kFont}}));
}

const StyledText::Color kVendored{0, 1, 0, 1};
const StyledText::Color kCustom{0, 0, 1, 1};

StyledText styled(const ObjCClass& cls) {
  return cls.description(kForeground, kVendored, kCustom, kFont);
}

ObjCClass sample() {
  return {"PXView",
          {std::make_shared<ObjCMethod>("tint:", "v24@0:8@16", false),
           std::make_shared<ObjCMethod>("tint:", "v24@0:8@16", true)},
          "_TtC1A1B",
          "UIView",
          "/System/Library/Frameworks/UIKit.framework/UIKit",
          {"NSCopying", "PXTinted"}};
}

TEST(ObjCClass, ReadsAsTheHeadOfItsDeclaration) {
  ObjCClass cls = sample();
  EXPECT_EQ(cls.description(), "PXView : UIView <NSCopying, PXTinted>");
  EXPECT_EQ(styled(cls).plain(), cls.description());
  EXPECT_EQ(cls.debugDescription(),
            "PXView : UIView <NSCopying, PXTinted>\n"
            "-\xC2\xA0 (void)tint:(id)\n"
            "+\xC2\xA0 (void)tint:(id)");
  cls.protocols.pop_back();
  EXPECT_EQ(cls.description(), "PXView : UIView <NSCopying>");
  cls.supercls.reset();
  EXPECT_EQ(cls.description(), "PXView <NSCopying>");
  EXPECT_EQ(ObjCClass("NSObject", {}, {}, {}, {}, {}).debugDescription(), "NSObject");
}

TEST(ObjCClass, ColoursTellWhoseATypeIs) {
  using Runs = std::vector<StyledText::Run>;
  EXPECT_EQ(styled(sample()).runs(), (Runs{{"PXView", kCustom, kFont},
                                           {" : ", kForeground, kFont},
                                           {"UIView", kVendored, kFont},
                                           {" <", kForeground, kFont},
                                           {"NSCopying", kVendored, kFont},
                                           {", ", kForeground, kFont},
                                           {"PXTinted", kVendored, kFont},
                                           {">", kForeground, kFont}}));
  const std::pair<std::optional<std::string>, StyledText::Color> rows[] = {
      {"/System/Library/A", kVendored},   {"/usr/lib/libobjc.A.dylib", kVendored},
      {"/usr/lib/system/x", kVendored},   {std::nullopt, kVendored},
      {"/usr/libexec/a", kCustom},        {"/Systems/a", kCustom},
      {"/usr/local/lib/a", kCustom},      {"System/a", kCustom},
      {"/var/containers/A.app", kCustom}, {"", kCustom},
  };
  for (const auto& [path, color] : rows) {
    ObjCClass cls = sample();
    cls.superclassPath = path;
    EXPECT_EQ(styled(cls).runs()[2].color, color) << path.value_or("none");
  }
}

TEST(ObjCClass, TellsItsMethodsApart) {
  const ObjCClass cls = sample();
  const auto identities = cls.methodIdentities();
  ASSERT_EQ(identities.size(), 2U);
  EXPECT_EQ(identities[0].first, cls.methods[0]);
  EXPECT_EQ(identities[0].second, (MethodIdentity{"PXView", "tint:", false}));
  EXPECT_EQ(identities[1].first, cls.methods[1]);
  EXPECT_EQ(identities[1].second, (MethodIdentity{"PXView", "tint:", true}));
  EXPECT_TRUE(ObjCClass().methodIdentities().empty());
}

TEST(ObjCClass, IsStoredUnderItsKeys) {
  ObjCClass cls = sample();
  cls.methods.pop_back();
  cls.mangledSuperclass.reset();
  const std::string json =
      R"({"name":"PXView","methods":[{"selector":"tint:","encoding":"v24@0:8@16",)"
      R"("isClassMethod":false}],"supercls":"UIView",)"
      R"("superclassPath":"\/System\/Library\/Frameworks\/UIKit.framework\/UIKit",)"
      R"("protocols":["NSCopying","PXTinted"]})";
  EXPECT_EQ(encodeJSON(cls), json);
  EXPECT_EQ(decodeJSON<ObjCClass>(json), cls);
  EXPECT_THROW(decodeJSON<ObjCMethod>(R"({"selector":"a:","encoding":"v"})"), DecodingError);
}

}  // namespace
}  // namespace tavlen
