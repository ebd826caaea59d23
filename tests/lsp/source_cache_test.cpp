#include "project/source_cache.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace lsp_test {
namespace {

using korvel::CachedFile;
using korvel::Source;
using korvel::SourceCache;

std::shared_ptr<const Source> SourceOfSize(std::size_t size) {
  const std::string text = "<metalib name=\"m\" version=\"1\"></metalib>";
  return std::make_shared<const Source>(*korvel::SourceOfText("m.xml", text + std::string(size - text.size(), ' ')));
}

TEST(SourceCacheTest, FindsAFileByItsContentAndNames) {
  SourceCache cache;
  const CachedFile file{"1", "git:HEAD:m.xml", "m.xml"};
  EXPECT_EQ(cache.Find(file), nullptr);
  const std::shared_ptr<const Source> source = SourceOfSize(100);
  cache.Keep(file, source);
  EXPECT_EQ(cache.Find(file), source);
  const std::vector<CachedFile> others = {
      {"2", "git:HEAD:m.xml", "m.xml"}, {"1", "git:main:m.xml", "m.xml"}, {"1", "git:HEAD:m.xml", "sub/m.xml"}};
  for (const CachedFile& other : others) EXPECT_EQ(cache.Find(other), nullptr);
}

TEST(SourceCacheTest, DropsTheFileThatWasNotUsedForTheLongestTime) {
  SourceCache cache(200);
  const CachedFile first{"1", "m.xml", "m.xml"};
  const CachedFile second{"2", "m.xml", "m.xml"};
  const CachedFile third{"3", "m.xml", "m.xml"};
  cache.Keep(first, SourceOfSize(100));
  cache.Keep(second, SourceOfSize(100));
  EXPECT_NE(cache.Find(first), nullptr);
  cache.Keep(third, SourceOfSize(100));
  EXPECT_NE(cache.Find(first), nullptr);
  EXPECT_EQ(cache.Find(second), nullptr);
  EXPECT_NE(cache.Find(third), nullptr);
  // A file that is larger is kept alone.
  cache.Keep(second, SourceOfSize(300));
  EXPECT_NE(cache.Find(second), nullptr);
  EXPECT_EQ(cache.Find(third), nullptr);
}

TEST(SourceCacheTest, KeepsNothingWithoutAText) {
  SourceCache cache;
  Source image = *SourceOfSize(100);
  image.text.reset();
  cache.Keep({"1", "m.xml", "m.xml"}, std::make_shared<const Source>(image));
  EXPECT_EQ(cache.Find({"1", "m.xml", "m.xml"}), nullptr);
}

}  // namespace
}  // namespace lsp_test
