#include "tavlen/foundation/files/URL.h"

#include <gtest/gtest.h>

namespace tavlen {
namespace {

TEST(URL, filePathsAreEscapedAndRead) {
  const struct {
    const char* path;
    const char* text;
  } rows[] = {{"/a b", "file:///a%20b"},
              {"/a#b?c%d", "file:///a%23b%3Fc%25d"},
              {"/a;b:c@d&e=f+g", "file:///a;b:c@d&e=f+g"},
              {"/a%20b", "file:///a%2520b"},
              {"/[x]{y}|z^`", "file:///%5Bx%5D%7By%7D%7Cz%5E%60"},
              {"/\"<>\\", "file:///%22%3C%3E%5C"},
              {"/日", "file:///%E6%97%A5"},
              {"/😀", "file:///%F0%9F%98%80"},
              {"/é", "file:///%C3%A9"},
              {"/!$&'()*+,-._~09AZaz", "file:///!$&'()*+,-._~09AZaz"},
              {"/\x01\x7F\xFF", "file:///%01%7F%FF"},
              {"/", "file:///"}};
  for (const auto& row : rows) {
    EXPECT_EQ(URL::fileURL(row.path).absoluteString, row.text);
    EXPECT_EQ((URL{row.text}.path()), row.path) << row.text;
  }
  EXPECT_EQ(URL::fileURL("/a//").absoluteString, "file:///a");
  EXPECT_EQ(URL::fileURL("/a//", true).absoluteString, "file:///a/");
  EXPECT_EQ(URL::fileURL("/a", true).absoluteString, "file:///a/");
  EXPECT_EQ(URL::fileURL("/", true).absoluteString, "file:///");
  EXPECT_EQ(URL::fileURL("a:b").path(), std::filesystem::current_path() / "a:b");
}

TEST(URL, pathIsThatOfFileURLsOnly) {
  const struct {
    const char* text;
    const char* path;
  } rows[] = {{"FILE:///A%2fb", "/A/b"},
              {"file://LocalHost/a/?q#f", "/a"},
              {"file:/a%3f#/b?", "/a?"},
              {"file:///a//", "/a"},
              {"file:////a", "//a"}};
  for (const auto& row : rows) EXPECT_EQ(URL{row.text}.path(), row.path) << row.text;
  for (const char* text : {"file://localhosts/a", "file://host/a", "file://", "file:a", "file",
                           "http://a/b", "/a", "", "file:///a%00b", "file:///a%", "file:///a%4",
                           "file:///a%4x", "file:///a%-1", "file:///a%+1", "file:///a% 1"}) {
    EXPECT_EQ(URL{text}.path(), std::nullopt) << text;
  }
}

/// The base and most rows are those of RFC 3986, section 5.4.
TEST(URL, referencesAreResolved) {
  const URL base{"http://a/b/c/d;p?q"};
  const struct {
    const char* reference;
    std::string below;  ///< "http://a/"
  } rows[] = {{"g", "b/c/g"},        {"./g", "b/c/g"},
              {"g/", "b/c/g/"},      {"/g", "g"},
              {"?y", "b/c/d;p?y"},   {"g?y#s", "b/c/g?y#s"},
              {"#s", "b/c/d;p?q#s"}, {";x", "b/c/;x"},
              {"", "b/c/d;p?q"},     {".", "b/c/"},
              {"..", "b/"},          {"../g", "b/g"},
              {"../..", ""},         {"../../../g", "g"},
              {"/./g", "g"},         {"/../g", "g"},
              {"..g", "b/c/..g"},    {"./g/.", "b/c/g/"},
              {"g/../h", "b/c/h"},   {"g?y/../x", "b/c/g?y/../x"},
              {"1:2", "b/c/1:2"}};
  for (const auto& row : rows) {
    EXPECT_EQ(base.resolved(row.reference).absoluteString, "http://a/" + row.below)
        << row.reference;
  }
  EXPECT_EQ(base.resolved("g:h").absoluteString, "g:h");
  EXPECT_EQ(base.resolved("//g").absoluteString, "http://g");
  EXPECT_EQ(URL{"file:///tmp/x/"}.resolved("a%20b").absoluteString, "file:///tmp/x/a%20b");
  EXPECT_EQ(URL{"http://a"}.resolved("g").absoluteString, "http://a/g");
  EXPECT_EQ(URL{"a/b"}.resolved("../../c").absoluteString, "/c");
  EXPECT_EQ(URL{""}.resolved("g").absoluteString, "g");
}

}  // namespace
}  // namespace tavlen
