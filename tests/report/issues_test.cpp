// Paths for services.
#include "report/result/issues.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace report_test {
namespace {

using korvel::ServicePath;

TEST(ServicePath, IsRelativeToTheWorkingDirectory) {
  const std::string here = std::filesystem::current_path().string();
  EXPECT_EQ(ServicePath("a/b.xml"), "a/b.xml");
  EXPECT_EQ(ServicePath("./a//b.xml"), "a/b.xml");
  EXPECT_EQ(ServicePath("../b.xml"), "../b.xml");
  EXPECT_EQ(ServicePath(here + "/a/b.xml"), "a/b.xml");
  EXPECT_EQ(ServicePath(here + "/a/../b.xml"), "b.xml");
  EXPECT_EQ(ServicePath("/elsewhere/b.xml"), "/elsewhere/b.xml");
  EXPECT_EQ(ServicePath(here + "2/b.xml"), here + "2/b.xml");
}

TEST(ServicePath, OmitsTheCommit) {
  EXPECT_EQ(ServicePath("git:HEAD~2:a/b.xml"), "a/b.xml");
  EXPECT_EQ(ServicePath("git:main:./a:b.xml"), "a:b.xml");
  EXPECT_EQ(ServicePath("git:x"), "git:x") << "a name, because there is no revision";
  EXPECT_EQ(ServicePath("<stdin>"), "");
}

}  // namespace
}  // namespace report_test
