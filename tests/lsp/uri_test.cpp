#include "base/uri.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace korvel {
namespace {

TEST(UriTest, NamesEveryPath) {
  std::string path = "/";
  for (int byte = 1; byte < 256; ++byte) path += static_cast<char>(byte);
  EXPECT_EQ(PathOf(UriOf(path)), path);
  EXPECT_EQ(UriOf("/srv/my schemas/100%.xml"), "file:///srv/my%20schemas/100%25.xml");
}

TEST(UriTest, KeepsRelativePathsRelative) { EXPECT_EQ(UriOf("a b/c.xml"), "a%20b/c.xml"); }

TEST(UriTest, TakesTheFormsThatEditorsSend) {
  EXPECT_EQ(PathOf("file:///a/b.xml"), "/a/b.xml");
  EXPECT_EQ(PathOf("file://localhost/a/b.xml"), "/a/b.xml");
  EXPECT_EQ(PathOf("file:///a%2fb%3A.xml"), "/a/b:.xml");
  EXPECT_EQ(PathOf("file:///a@b.xml"), "/a@b.xml");
}

TEST(UriTest, RefusesWhatIsNoFile) {
  for (const char* const uri : {"", "untitled:Untitled-1", "git:/a.xml", "file://server/a.xml", "file:a.xml", "file:///a%0",
                                "file:///a%00", "file:///a%zz"}) {
    EXPECT_EQ(PathOf(uri), std::nullopt) << uri;
  }
}

}  // namespace
}  // namespace korvel
