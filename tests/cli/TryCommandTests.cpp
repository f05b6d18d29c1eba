// `try`: a program of the tests with a tweak that the command made.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;

class TryCommandTest : public CommandStoreTest {
 protected:
  TryCommandTest() { done("new Shelf --app com.example.notes"); }

  void done(const std::string& line) const {
    const Result result = run(line);
    ASSERT_EQ(result.status, 0) << line << '\n' << result.err;
  }
  void hook(const std::string& method, const std::string& types, const std::string& value) const {
    done("hook add Shelf '" + method + "' --signature '" + types + "' --return '" + value + "'");
  }
  Result tried(const std::string& options, const std::string& arguments = "") const {
    return run("try Shelf " + options + " -- " + paths().loaderProgram + ' ' + arguments);
  }
};

/// The lines "name: value" that the program prints.
std::map<std::string, std::string> answersIn(const std::string& output) {
  std::map<std::string, std::string> answers;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);)
    answers[line.substr(0, line.find(": "))] = line.substr(line.find(": ") + 2);
  return answers;
}

TEST_F(TryCommandTest, EachConstantThatCanBeStoredAnswers) {
  const auto before = answersIn(tried("").out);
  const std::vector<std::array<std::string, 4>> cases = {
      {"title", "@16@0:8", "string:hooked", "hooked"},
      {"isOpen", "B16@0:8", "bool:true", "1"},
      {"letter", "c16@0:8", "int:98", "98"},
      {"small", "s16@0:8", "int:-3", "-3"},
      {"smallCount", "S16@0:8", "uint:3", "3"},
      {"number", "i16@0:8", "int:-5", "-5"},
      {"count", "I16@0:8", "uint:5", "5"},
      {"large", "q16@0:8", "int:-9", "-9"},
      {"largeCount", "Q16@0:8", "uint:9", "9"},
      {"ratio", "f16@0:8", "double:0.75", "0.75"},
      {"width", "d16@0:8", "double:1.5", "1.5"},
      {"exact", "D16@0:8", "double:0.375", "0.375"},
      {"name", "r*16@0:8", "string:hooked", "hooked"},
      {"itemClass", "#16@0:8", "class:NSString", "NSString"},
      {"action", ":16@0:8", "selector:a:b:", "a:b:"},
      {"frame", "{CGRect={CGPoint=dd}{CGSize=dd}}16@0:8", "code:({origin:{x:5,y:6},size:[7,8]})",
       "5 6 7 8"},
      {"range", "{_NSRange=QQ}16@0:8", "code:[8,9]", "{location=8, length=9}"},
      {"block", "@16@0:8",
       R"(json:{"type":"Array","items":[{"type":"Nil"},{"type":"Color","red":1,"green":0.5,"blue":0,"alpha":1}]})",
       R"(("<null>", "UIColor 1 0.5 0 1"))"},
      {"join", "", "", "a 1 0.5 8 n 4"},
      {"inherited", "@16@0:8", "", "hooked"},
  };
  for (const auto& [name, types, value, after] : cases) {
    if (!value.empty()) hook("-[Shelf " + name + "]", types, value);
  }
  const Result result = tried("");
  auto answers = answersIn(result.out);
  auto expected = before;
  for (const auto& [name, types, value, after] : cases) expected[name] = after;
  EXPECT_EQ(answers, expected) << result.err;
  EXPECT_EQ(result.status, 0);
}

TEST_F(TryCommandTest, OverridesChangeWhatTheMainBundleSays) {
  fs::create_directories(folder() / "Shelf.app/Resources");
  fs::copy(paths().loaderProgram, folder() / "Shelf.app/Shelf");
  write("Shelf.app/Resources/Info-gnustep.plist",
        R"({ CFBundleName = own; MinimumOSVersion = "9.0"; Own = value; })");
  const auto info = [&] { return answersIn(run("try Shelf -- Shelf.app/Shelf").out)["info"]; };
  EXPECT_EQ(info(), "own 9.0 value 3");
  done("override add Shelf BundleName Overridden");
  EXPECT_EQ(info(), "Overridden 9.0 value 3");
  done("override add Shelf MinimumOSVersion none");
  EXPECT_EQ(info(), "Overridden (null) value 2");
}

TEST_F(TryCommandTest, SaysWhatIsHookedAndWhatIsNot) {
  hook("-[Shelf title]", "@16@0:8", "code:missing");
  hook("-[Shelf count]", "d16@0:8", "double:1");
  hook("-[Absent count]", "d16@0:8", "double:1");
  const std::string errors = tried("").err;
  EXPECT_THAT(errors, HasSubstr("tavlen: hooked -[Shelf title]\n"));
  EXPECT_THAT(
      errors,
      HasSubstr("hooks[0]: error: -[Shelf title]: ReferenceError: Can't find variable: missing\n"));
  EXPECT_THAT(
      errors,
      HasSubstr(
          "hooks[1]: warning: not hooked: -[Shelf count]: the method's types are I16@0:8, and the "
          "hook's d16@0:8\n"));
  EXPECT_THAT(errors, HasSubstr("hooks[2]: warning: not hooked yet: -[Absent count]: no image has "
                                "the class Absent\n"));
  write("script.objs",
        "hookClass('Shelf', {}, {\n  'i16@0:8-number': function() {\n    return %orig + gone;\n  "
        "}\n});");
  done("script set Shelf script.objs");
  EXPECT_THAT(
      tried("").err,
      HasSubstr(
          "script.objs:3:20: error: -[Shelf number]: ReferenceError: Can't find variable: gone\n"));
}

TEST_F(TryCommandTest, HooksClassesWhoseSuperclassesAndCategoriesComeAfterThem) {
  std::map<std::string, std::string> expected;
  for (const std::string name : {"own", "inherited", "label"}) {
    hook("-[Box " + name + "]", "@16@0:8", "string:hooked");
    expected[name] = "hooked";
  }
  const Result result = tried("", "late " + paths().lateImage);
  EXPECT_EQ(answersIn(result.out), expected) << result.err;
  EXPECT_THAT(result.err, HasSubstr("not hooked yet: -[Box label]: the class has no such method"));
}

TEST_F(TryCommandTest, TracesCallsAsTextAndAsJSON) {
  hook("-[Shelf join:number:real:frame:name:range:]",
       "@100@0:8@16i24d28{CGRect={CGPoint=dd}{CGSize=dd}}36r*68{_NSRange=QQ}84", "string:traced");
  EXPECT_THAT(tried("--trace").err,
              testing::ContainsRegex(
                  "-\\[Shelf join:.*\\] of <Shelf 0x[0-9a-f]+>, @\"a\", 1, 0.5, "
                  "\\{\"origin\":\\{\"x\":1,\"y\":2\\},\"size\":\\{\"width\":3,\"height\":4\\}\\}, "
                  "\"n\", \\{\"location\":3,\"length\":4\\} -> @\"traced\"; [0-9]+\\.[0-9] us\n"));
  EXPECT_THAT(
      tried("--trace --json").err,
      HasSubstr(
          R"({"event":"call","method":"-[Shelf join:number:real:frame:name:range:]","receiver":"<Shelf 0x)"));
}

/// The command itself, with classes that the system would bring, is a program, too.
TEST_F(TryCommandTest, RunsAProgramThatUsesTheSystemsClasses) {
  hook("-[LSApplicationProxy bundleIdentifier]", "@16@0:8", "string:com.example.hooked");
  hook("-[LSApplicationWorkspace allApplications]", "@16@0:8",
       "code:[%orig subarrayWithRange:[1, 1]]");
  const auto app = [](const std::string& name) {
    return "<dict><key>bundleIdentifier</key><string>com.example." + name +
           "</string><key>bundleURL</key><string>/Absent/" + name + ".app</string></dict>";
  };
  environment(standIns("<key>applications</key><array>" + app("A") + app("B") + "</array>"));
  const Result result = run("try Shelf -- " + paths().command + " apps --root / --json");
  EXPECT_THAT(result.out, HasSubstr("com.example.hooked"));
  EXPECT_THAT(result.out, HasSubstr("/Absent/B.app"));
  EXPECT_EQ(result.out.find("/Absent/A.app"), std::string::npos);
}

TEST_F(TryCommandTest, RefusesAnInstallationThatCannotBePreloaded) {
  for (const char* name : {"two words", "a:b"}) {
    const fs::path prefix = folder() / name;
    fs::create_directories(prefix / "bin");
    fs::create_directories(prefix / "lib/tavlen");
    fs::copy_file(paths().command, prefix / "bin/tavlen");
    write(std::string(name) + "/lib/tavlen/libtavlenloader.so", "");
    const Result result = shell("'" + (prefix / "bin/tavlen").string() +
                                "' try Shelf --transpiler '" + paths().resources + "' -- true");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("a path with a blank or a colon cannot be preloaded"));
  }
}

TEST_F(TryCommandTest, LeavesTheProgramItsSignals) {
  hook("-[Shelf title]", "@16@0:8", "string:hooked");
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGUSR1}) {
    const std::string number = std::to_string(signal);
    const int handled = 40 + (signal == SIGUSR1 ? 1 : 0);
    EXPECT_EQ(tried("", "signal " + number).status, 128 + signal);
    EXPECT_EQ(tried("", "signal " + number + " handled").status, handled) << signal;
    std::string early = "HANDLE_EARLY=" + number;
    early.append(" \"$tavlen\" try Shelf -- ").append(paths().loaderProgram);
    early.append(" signal ").append(number);
    EXPECT_EQ(shell(early).status, handled) << signal;
  }
  EXPECT_EQ(tried("", "signal null").status, 128 + SIGSEGV);
}

TEST_F(TryCommandTest, LeavesTheProgramItsStatusAndItsEnvironment) {
  EXPECT_EQ(tried("", "status 7").status, 7);
  hook("-[Shelf title]", "@16@0:8", "string:hooked");
  const Result child = tried("", "child");
  EXPECT_THAT(child.out, HasSubstr("title: original\n"));
  EXPECT_EQ(child.out.find("TAVLEN_LOADER"), std::string::npos);
  EXPECT_EQ(child.out.find("LD_PRELOAD"), std::string::npos);
  expectRefused("try Shelf -- ", {{"./absent", 1, "./absent: No such file or directory\n"},
                                  {"./", 1, "./: Is a directory\n"},
                                  {"''", 1, "the name of the program is empty\n"}});
}

TEST_F(TryCommandTest, SystemProgramsGetWhatTheyWouldGetWithoutIt) {
  write("three", "passed on");
  EXPECT_EQ(shell("exec 3<three; ulimit -n 60; \"$tavlen\" try Shelf -- cat /dev/fd/3").out,
            "passed on");
  // What a child of the program inherits: nothing of the command's engine, or of the loader's.
  const std::string list =
      "sh -c 'ls -l /proc/self/fd; :' | sed -n 's/.* -> //p' | sed 's/:.*//; /proc/d' | sort";
  EXPECT_EQ(shell("exec 3<three; \"$tavlen\" try Shelf -- " + list).out,
            shell("exec 3<three; " + list).out);
  EXPECT_EQ(shell("\"$tavlen\" try Shelf -- sleep 60 & sleep 1; kill $!; wait $!").status,
            128 + SIGTERM);
  write("script.sh", "#!/bin/sh\nexit 3\n");
  fs::permissions(folder() / "script.sh", fs::perms::owner_all);
  EXPECT_EQ(shell("{ \"$tavlen\" try Shelf -- " + paths().loaderProgram +
                  " status 7 >&-; echo $? >status; } 2>&1 | true; cat status")
                .out,
            "7\n");
  const Result script = run("try Shelf -- ./script.sh");
  EXPECT_EQ(script.status, 3);
  EXPECT_THAT(script.err, HasSubstr("./script.sh: ran without the tweak"));
}

}  // namespace
}  // namespace tavlen
