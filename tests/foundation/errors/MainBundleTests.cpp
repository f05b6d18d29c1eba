#include "tavlen/foundation/errors/MainBundle.h"

#include <unicode/uloc.h>

#include <utility>

#include "tavlen/foundation/errors/Placeholders.h"
#include "tavlen/foundation/errors/detail/StringTable.h"
#include "tavlen/foundation/plist/PropertyListSerialization.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"

namespace tavlen {
namespace {

/// A bundle in a temporary folder, the main one while the test runs, and a locale for that time.
class MainBundleTest : public testing::Test {
 protected:
  MainBundleTest() { MainBundle::setURL(bundle_); }
  ~MainBundleTest() override {
    MainBundle::setURL({});
    setLocale(locale_);
  }

  static void setLocale(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    uloc_setDefault(locale.c_str(), &status);
    ASSERT_TRUE(U_SUCCESS(status));
  }
  void addTable(const std::string& folder, const std::string& text) const {
    folder_.write(folder + "/Localizable.strings", text);
  }
  /// What the key "k" gives after everything has been forgotten.
  std::string lookUp() const {
    MainBundle::setURL(bundle_);
    return MainBundle::localizedString({"k", "English"});
  }

  const TemporaryFolder folder_;
  const fs::path bundle_ = folder_.path();
  const std::string locale_ = uloc_getDefault();
};

TEST_F(MainBundleTest, TheClosestTableAnswers) {
  const std::string kFolders[] = {".",           "Base.lproj",  "en.lproj", "de.lproj",
                                  "de_AT.lproj", "de-AT.lproj", "zh.lproj", "zh-Hant.lproj"};
  setLocale("de_AT");
  EXPECT_EQ(lookUp(), "English");
  for (const std::string& folder : kFolders) {
    addTable(folder, "k = \"" + folder + "\";");
    if (!folder.starts_with("zh")) {
      EXPECT_EQ(lookUp(), folder);
    }
  }
  const std::pair<const char*, const char*> kLocales[] = {
      {"de_AT@collation=phonebook", "de-AT.lproj"},
      {"de_DE", "de.lproj"},
      {"zh_TW", "zh-Hant.lproj"},
      {"zh_CN", "zh.lproj"},
      {"fr", "en.lproj"},
      {"en_US_POSIX", "en.lproj"},
      {"", "en.lproj"}};
  for (const auto& [locale, folder] : kLocales) {
    setLocale(locale);
    EXPECT_EQ(lookUp(), folder) << locale;
  }
}

TEST_F(MainBundleTest, WhatCannotBeReadLeavesTheEnglish) {
  setLocale("en_GB");
  addTable("en.lproj", "k = Text; empty = ''; '' = nothing;");
  EXPECT_EQ(lookUp(), "Text");
  EXPECT_EQ(MainBundle::localizedString({"empty", "English"}), "");
  EXPECT_EQ(MainBundle::localizedString({"other", "English"}), "English");
  EXPECT_EQ(MainBundle::localizedString({"", "English"}), "English");
  addTable("en.lproj", "k = Text");
  EXPECT_EQ(MainBundle::localizedString({"k", "English"}), "Text") << "the table is kept";
  EXPECT_EQ(lookUp(), "English");
  addTable("en.lproj", std::string("\xFF\xFEk\0=\0\xE9\0", 8));
  EXPECT_EQ(lookUp(), "English") << "cut";
  addTable("en.lproj", std::string("\xFF\xFEk\0=\0'\0\xE9\0'\0;\0", 14));
  EXPECT_EQ(lookUp(), "é");
  for (const PropertyListFormat form : {PropertyListFormat::xml, PropertyListFormat::binary}) {
    const PropertyList list = readPropertyList(
        "<plist><dict><key>k</key><string>\u00E9 "
        "%@</string><key>other</key><true/></dict></plist>");
    addTable("en.lproj", writePropertyList(list, form));
    EXPECT_EQ(lookUp(), "\u00E9 %@");
    EXPECT_EQ(MainBundle::localizedString({"other", "English"}), "English") << "not a text";
  }
  for (const char* list : {"<plist><array/></plist>", "<plist><dict>", "bplist00"}) {
    addTable("en.lproj", list);
    EXPECT_EQ(lookUp(), "English") << list;
  }
  fs::create_directories(bundle_ / "en-GB.lproj" / "Localizable.strings");
  EXPECT_EQ(lookUp(), "English");
  MainBundle::setURL(bundle_ / "missing");
  EXPECT_EQ(MainBundle::localizedString({"k", "English"}), "English");
  MainBundle::setURL({});
  EXPECT_EQ(MainBundle::localizedString({"k", "English"}), "English");
  EXPECT_EQ(MainBundle::url(), "");
}

struct SampleError : LocalizedError {
  SampleError() : LocalizedError({"k", "%@ is not in %@"}, {"a", "%@b"}) {}
};

TEST_F(MainBundleTest, ErrorsSpeakTheUsersLanguage) {
  setLocale("de");
  const SampleError error;
  EXPECT_STREQ(error.what(), "a is not in %@b");
  addTable("de.lproj", "k = \"in %2$@ fehlt %1$@\";");
  MainBundle::setURL(bundle_);
  EXPECT_STREQ(error.what(), "in %@b fehlt a");
}

TEST_F(MainBundleTest, ThreadsMayLookUpWhileTheFolderChanges) {
  addTable("en.lproj", "k = Text;");
  setLocale("en");
  inThreads(4, [this](int thread) {
    for (int round = 0; round < 50; ++round) {
      if (thread == 0) MainBundle::setURL(round % 2 == 0 ? bundle_ : fs::path());
      const std::string text = MainBundle::localizedString({"k", "English"});
      EXPECT_TRUE(text == "Text" || text == "English") << text;
    }
  });
}

TEST(Placeholders, AreFilledInOnePass) {
  for (const auto& row : tableFrom("placeholders.txt", 2)) {
    EXPECT_EQ(fillPlaceholders(row[0], std::vector(row.begin() + 2, row.end())), row[1]) << row[0];
  }
}

using namespace std::string_view_literals;

struct ValueCase {
  std::string_view table;
  std::string_view value;  // of the key "k"
};

constexpr ValueCase kValueCases[] = {
    {R"("k" = "v";)", "v"},
    {R"(k=v;)", "v"},
    {R"('k' = 'it"s';)", "it\"s"},
    {R"("k";)", "k"},
    {R"(k = "";)", ""},
    {R"("k" = "1"; "other" = "2"; "k" = "3";)", "3"},
    {R"(k = a_$/:.-Z09;)", "a_$/:.-Z09"},
    {R"(k = http://x/;)", "http://x/"},  // a token that has begun takes the slashes
    {"// one\r/* two **/ \"k\" /**/ = // x\n\t\v\f \"v\"\xE2\x80\xA8/* */;\xE2\x80\xA9 /*/ open",
     "v"},
    {"//c\xE2\x80\xA8k = v;", "v"},
    {"k = \"a\nb // c\";", "a\nb // c"},
    {R"(k = "\n\t\r\a\b\f\v\"\\\'";)", "\n\t\r\a\b\f\v\"\\'"},
    {"k = \"a\\\nb\";", "a\nb"},
    {R"(k = "\q\u0041\8\é\U";)", "qu00418éU"},
    {R"(k = "\U41\U00e91\UFEFFx";)",
     "A\u00E9"
     "1\uFEFFx"},
    {R"(k = "\UD83D\UDE00";)", "\U0001F600"},
    {R"(k = "\UD83D\UD83D\UDE00\UDE00\UD83Dx\UD83D";)", "\uFFFD\U0001F600\uFFFD\uFFFDx\uFFFD"},
    {R"(k = "\UD83D\n";)", "\uFFFD\n"},
    {R"(k = "\101\60\0609\7";)",
     "A00"
     "9\a"},
    {R"(k = "\200\241\254\256\276\301\341\365\375\376\777";)",
     "\u00A0\u00A1\u2039\uFB01\u00AC\u02CB\u00C6\u0131\u00FF\uFFFD\uFFFD"},
    {R"(k = "\0";)", "\0"sv}};

TEST(StringTable, ReadsTheTextForm) {
  for (const ValueCase& c : kValueCases) {
    SCOPED_TRACE(c.table);
    const auto table = StringTable::parse(c.table);
    ASSERT_TRUE(table);
    const std::string* value = table->find("k");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(*value, c.value);
    EXPECT_EQ(table->find("K"), nullptr);
  }
}

TEST(StringTable, ATableMayBeEmpty) {
  for (const std::string_view text : {"", " \n", "// only\n/* comments */"}) {
    const auto table = StringTable::parse(text);
    ASSERT_TRUE(table) << text;
    EXPECT_EQ(table->size(), 0U);
  }
}

TEST(StringTable, OneFaultMakesTheWholeFileUnusable) {
  constexpr std::string_view kBroken[] = {
      "k = v",   "k = v; \"open", "k = \"v\\", "k = v; k2 = 'v\";", "k v;",
      "k = ;",   "= v;",          "k = v;;",   "{ k = v; }",        "k = v w;",
      "k == v;", "k = é;",        "k = v; /",  "k = \xFF;",         "k\0= v;"sv};
  for (const std::string_view text : kBroken) {
    EXPECT_FALSE(StringTable::parse(text)) << testing::PrintToString(text);
  }
}

TEST(StringTable, LongInputIsReadInOneGo) {
  std::string text;
  for (int i = 0; i < 50'000; ++i) text += "/*//*/\"" + std::to_string(i) + "\"=\"\\\\\";";
  const auto table = StringTable::parse(text);
  ASSERT_TRUE(table);
  EXPECT_EQ(table->size(), 50'000U);
  EXPECT_FALSE(StringTable::parse(std::string(1'000'000, '(')));
  EXPECT_FALSE(StringTable::parse("\"" + std::string(1'000'000, '\\')));
}

}  // namespace
}  // namespace tavlen
