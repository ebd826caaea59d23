// Ids of blobs, as "git hash-object" prints them.
#include "project/blob_id.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

struct Case {
  std::size_t size;  // of the file, which consists of the letter a
  const char* id;
};

// With the header, the sizes surround those at which another block of 64 bytes begins.
TEST(BlobId, EqualsThatOfGit) {
  const Case kCases[] = {
      {0, "e69de29bb2d1d6434b8b29ae775ad8c2e48c5391"},    {1, "2e65efe2a145dda7ee51d1741299f848e5bf752e"},
      {46, "50b3bbe915fe104dbbb6786fdcfa310bcfc25d4e"},   {47, "5e3bf7e629b4908cce461530c17a64365cb47303"},
      {48, "12d42395b020f44bb7710113b31f688d0ebeda7c"},   {54, "60704cd2c753c0419b5d235cbf244ec4c696cded"},
      {55, "d1985ddc2983785702b9a90effd5aff2f7cfdca4"},   {56, "1f973e890f52da1f22fa7e5620a628bc4ee74cb3"},
      {57, "d28c6cde5a5ab0b138bd53a288c23e8c011c4171"},   {119, "1325c3d76ea6a66e75dce490a0b8cb8b12233ee0"},
      {1000, "a50be72b20f0e3f078d252e8e56b11b4bec67509"},
  };
  for (const Case& test : kCases) EXPECT_EQ(korvel::BlobId(std::string(test.size, 'a')), test.id) << test.size;
}

TEST(BlobId, CountsEveryByte) { EXPECT_EQ(korvel::BlobId({"\0\xff", 2}), "ba01f6b05bdbb386b35f4d086e268c5d422cafb9"); }

}  // namespace
