#include "report/result/service_path.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace report_test {
namespace {

namespace fs = std::filesystem;
using korvel::ServicePaths;

// Changes to a directory of its own: a repository with the directory sub/deep.
class ServicePathsTest : public testing::Test {
 protected:
  ServicePathsTest() : before_(fs::current_path()) {
    std::string name = fs::temp_directory_path() / "service-path-XXXXXX";
    repository_ = fs::canonical(mkdtemp(name.data()));
    fs::create_directories(repository_ / ".git");
    fs::create_directories(repository_ / "sub/deep");
    fs::current_path(repository_ / "sub/deep");
  }
  ~ServicePathsTest() override {
    fs::current_path(before_);
    fs::remove_all(repository_);
  }

  fs::path before_;
  fs::path repository_;
};

TEST_F(ServicePathsTest, AreRelativeToTheTopOfTheRepository) {
  const ServicePaths paths(std::nullopt);
  EXPECT_EQ(paths.Of("a.xml"), "sub/deep/a.xml");
  EXPECT_EQ(paths.Of("./x//a.xml"), "sub/deep/x/a.xml");
  EXPECT_EQ(paths.Of("../../b.xml"), "b.xml");
  EXPECT_EQ(paths.Of(repository_ / "sub/c.xml"), "sub/c.xml");
  EXPECT_EQ(paths.Of("../../../b.xml"), "../b.xml");
  EXPECT_EQ(paths.Of("/elsewhere/b.xml"), "/elsewhere/b.xml");
  EXPECT_EQ(paths.Of(repository_.string() + "2/b.xml"), repository_.string() + "2/b.xml");
}

TEST_F(ServicePathsTest, OmitTheCommit) {
  const ServicePaths paths(std::nullopt);
  EXPECT_EQ(paths.Of("git:HEAD~2:a/b.xml"), "a/b.xml");
  EXPECT_EQ(paths.Of("git:main...:a/b.xml"), "a/b.xml");
  EXPECT_EQ(paths.Of("git:main:./a:b.xml"), "sub/deep/a:b.xml");
  EXPECT_EQ(paths.Of("git:main:../b.xml"), "sub/b.xml");
  EXPECT_EQ(paths.Of("git:x"), "sub/deep/git:x") << "a name, because there is no revision";
  EXPECT_EQ(paths.Of("<stdin>"), "");
}

TEST_F(ServicePathsTest, ShownInTextsWithTheCommit) {
  const ServicePaths paths(std::nullopt);
  EXPECT_EQ(paths.Shown("a.xml"), "sub/deep/a.xml");
  EXPECT_EQ(paths.Shown("git:main...:./a.xml"), "git:main...:sub/deep/a.xml");
  EXPECT_EQ(paths.Shown("<stdin>"), "<stdin>");
  EXPECT_EQ(paths.Shown(""), "");
  EXPECT_EQ(ServicePaths("shop/").Shown("git:HEAD:sub/deep/a.xml"), "git:HEAD:shop/a.xml");
  EXPECT_EQ(korvel::ShownName("a\n.xml", &paths), "sub/deep/a\\n.xml");
  EXPECT_EQ(korvel::ShownName("a.xml", nullptr), "a.xml");
}

TEST_F(ServicePathsTest, PrefixReplacesTheTop) {
  const ServicePaths paths("services/shop/");
  EXPECT_EQ(paths.Of("a.xml"), "services/shop/a.xml");
  EXPECT_EQ(paths.Of("../b.xml"), "services/b.xml");
  EXPECT_EQ(paths.Of("git:HEAD:sub/deep/a.xml"), "services/shop/a.xml");
  EXPECT_EQ(paths.Of("/elsewhere/b.xml"), "/elsewhere/b.xml");
  EXPECT_EQ(ServicePaths("").Of("a.xml"), "a.xml");
}

TEST_F(ServicePathsTest, AreRelativeToTheWorkingDirectoryOutsideOfRepositories) {
  fs::remove_all(repository_ / ".git");
  const ServicePaths paths(std::nullopt);
  EXPECT_EQ(paths.Of("a.xml"), "a.xml");
  EXPECT_EQ(paths.Of("../b.xml"), "../b.xml");
  EXPECT_EQ(paths.Of(repository_ / "sub/deep/x/a.xml"), "x/a.xml");
}

}  // namespace
}  // namespace report_test
