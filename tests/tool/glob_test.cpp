// Patterns of paths, case by case.
#include "project/glob.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using korvel::FixedDirectory;
using korvel::MatchesGlob;

struct Case {
  const char* pattern;
  const char* path;
  bool matches;
};

TEST(Glob, Matches) {
  const Case kCases[] = {
      {"a.xml", "a.xml", true},
      {"a.xml", "b.xml", false},
      {"a.xml", "sub/a.xml", false},
      {"*.xml", "a.xml", true},
      {"*.xml", ".xml", true},
      {"*.xml", "sub/a.xml", false},
      {"*", "a", true},
      {"*", "a/b", false},
      {"a*b*c", "aXbXbc", true},
      {"a*b*c", "aXcXb", false},
      {"a**b", "aXb", true},
      {"?.xml", "\xc3\xa4.xml", true},
      {"?.xml", "\xff.xml", true},
      {"?.xml", "ab.xml", false},
      {"sub/*.xml", "sub/a.xml", true},
      {"sub/*.xml", "sub/deep/a.xml", false},
      {"**/*.xml", "a.xml", true},
      {"**/*.xml", "sub/deep/a.xml", true},
      {"**/*.xml", "sub/deep/a.qmb", false},
      {"sub/**/a.xml", "sub/a.xml", true},
      {"sub/**/a.xml", "sub/x/y/a.xml", true},
      {"sub/**/a.xml", "other/x/a.xml", false},
      {"sub/**", "sub/x/y", true},
      {"sub/**", "sub", false},
      {"**", "a/b/c", true},
      {"**/x/**/y", "x/x/y", true},
      {"**/x/**/y", "a/y/x", false},
      {"**/b/*", "a/b/b/c", true},
      {"[a].xml", "a.xml", false},
      {"[a].xml", "[a].xml", true},
      {"", "a", false},
  };
  for (const auto& [pattern, path, matches] : kCases) EXPECT_EQ(MatchesGlob(pattern, path), matches) << pattern << " " << path;
}

// Backtracking to every star would never end.
TEST(Glob, ManyStarsAreFast) {
  std::string names;
  std::string directories;
  for (int i = 0; i < 100; ++i) names += "a*";
  for (int i = 0; i < 100; ++i) directories += "**/a/";
  EXPECT_FALSE(MatchesGlob(names + "b", std::string(1000, 'a')));
  std::string path = "a";
  for (int i = 0; i < 1000; ++i) path += "/a";
  EXPECT_FALSE(MatchesGlob(directories + "b", path));
}

TEST(Glob, FixedDirectories) {
  EXPECT_EQ(FixedDirectory("a.xml"), "");
  EXPECT_EQ(FixedDirectory("*.xml"), "");
  EXPECT_EQ(FixedDirectory("sub/a.xml"), "sub");
  EXPECT_EQ(FixedDirectory("sub/deep/*.xml"), "sub/deep");
  EXPECT_EQ(FixedDirectory("sub/d*/a.xml"), "sub");
  EXPECT_EQ(FixedDirectory("**/a.xml"), "");
}

}  // namespace
