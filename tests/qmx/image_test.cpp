// Tests images: a written image is read back, and the error of a damaged image says what is wrong.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include "qmx/image_header.h"
#include "qmx/image_reading.h"

namespace {

using qmx::ImageHeader;
using qmx::ImageResult;

std::string Bytes(const qmx::Metalib& metalib) { return {reinterpret_cast<const char*>(metalib.get()), metalib.size()}; }

qmx::Metalib EmptyLibrary(qmx::Protocol protocol = qmx::Protocol::kUnset) {
  return *qmx::MetalibBuilder("", 0, protocol).Finish().metalib;
}

std::string Why(const ImageResult& result) { return result.metalib ? "accepted" : qmx::Describe(result.error); }

class ImageFile {
 public:
  explicit ImageFile(const std::string& bytes) : path_(testing::TempDir() + "image-" + std::to_string(::getpid())) {
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  ImageFile(const ImageFile&) = delete;
  ImageFile& operator=(const ImageFile&) = delete;
  ~ImageFile() { std::remove(path_.c_str()); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

TEST(Image, ReadsBackWrittenImage) {
  const qmx::Metalib library = image::FullLibrary();
  const std::string written = qmx::WriteImage(library);
  const ImageResult loaded = image::Load(written);
  ASSERT_TRUE(loaded.metalib) << Why(loaded);
  EXPECT_EQ(Bytes(*loaded.metalib), Bytes(library));
  EXPECT_EQ(qmx::WriteImage(*loaded.metalib), written);
}

TEST(Image, LibraryOutlivesItsFile) {
  const qmx::Metalib library = image::FullLibrary();
  ImageResult read_image;
  {
    const ImageFile file(qmx::WriteImage(library));
    read_image = qmx::ReadImage(file.path());
  }
  ASSERT_TRUE(read_image.metalib) << Why(read_image);
  EXPECT_EQ(Bytes(*read_image.metalib), Bytes(library));
  EXPECT_EQ(image::ReadEverything(read_image.metalib->get()), image::ReadEverything(library.get()));
}

// Memory of such a size comes in large pages.
TEST(Image, ReadsLargeImages) {
  qmx::MetalibBuilder builder("large", 1, qmx::Protocol::kQmx);
  for (int i = 0; i < 20'000; ++i) {
    builder.AddMeta("table_" + std::to_string(i));
    builder.AddEntry({.name = "uid", .type = "uint64"});
  }
  const std::string written = qmx::WriteImage(*builder.Finish().metalib);
  ASSERT_GT(written.size(), std::size_t{2} << 20);
  const ImageFile file(written);
  const ImageResult read = qmx::ReadImage(file.path());
  ASSERT_TRUE(read.metalib) << Why(read);
  EXPECT_TRUE(qmx::WriteImage(*read.metalib) == written);
}

TEST(Image, EqualLibrariesGiveEqualBytes) {
  EXPECT_EQ(qmx::WriteImage(image::FullLibrary()), qmx::WriteImage(image::FullLibrary()));
}

TEST(Image, AcceptsLibraryWithoutMetas) {
  for (const auto protocol : {qmx::Protocol::kUnset, qmx::Protocol::kQmx, qmx::Protocol::kTlv}) {
    const ImageResult loaded = image::Load(qmx::WriteImage(EmptyLibrary(protocol)));
    EXPECT_TRUE(loaded.metalib) << Why(loaded);
  }
}

TEST(Image, IsRecognizedByFirstBytes) {
  EXPECT_TRUE(qmx::IsImage(qmx::WriteImage(EmptyLibrary())));
  EXPECT_TRUE(qmx::IsImage("QMXIMAGE"));
  EXPECT_FALSE(qmx::IsImage("QMXIMAG"));
  EXPECT_FALSE(qmx::IsImage("<metalib name=\"QMXIMAGE\"/>"));
  EXPECT_FALSE(qmx::IsImage(""));
}

// A number in the header, its new value, and the expected error.
struct Damage {
  std::size_t offset;
  std::size_t width;  // bytes
  std::uint64_t value;
  const char* text;
};

TEST(Image, RefusesDamagedHeaders) {
  const std::string image = qmx::WriteImage(EmptyLibrary());
  const Damage kDamages[] = {
      {0, 1, 'X', "header: magic at byte 0 is 'XMXIMAGE'; allowed: 'QMXIMAGE'"},
      {offsetof(ImageHeader, byte_order), 4, 0x04030201,
       "header: byte order at byte 8 is big-endian; allowed: little-endian, that of this machine"},
      {offsetof(ImageHeader, byte_order), 4, 7,
       "header: byte order at byte 8 is unknown (7); allowed: little-endian, that of this machine"},
      {offsetof(ImageHeader, version), 4, 2, "header: format version at byte 12 is 2; allowed: 1"},
      {offsetof(ImageHeader, header_size), 4, 72, "header: header size at byte 16 is 72; allowed: 64"},
      {offsetof(ImageHeader, reserved), 4, 1, "header: reserved at byte 20 is 1; allowed: 0"},
      {offsetof(ImageHeader, reserved_2) + 16, 8, 5, "header: reserved at byte 56 is 5; allowed: 0"},
      {offsetof(ImageHeader, block_size), 8, 72,
       "header: block size at byte 24 is 72; allowed: 64, the number of bytes after the header; the image is truncated"},
      {offsetof(ImageHeader, block_size), 8, 56,
       "header: block size at byte 24 is 56; allowed: 64, the number of bytes after the header; "
       "bytes follow the end of the image"},
  };
  ASSERT_EQ(image.size(), 128u);
  for (const Damage& damage : kDamages) {
    std::string damaged = image;
    std::memcpy(damaged.data() + damage.offset, &damage.value, damage.width);
    EXPECT_EQ(Why(image::Load(damaged)), damage.text);
  }
}

TEST(Image, RefusesWrongChecksum) {
  std::string image = qmx::WriteImage(image::FullLibrary());
  image.back() = 1;
  EXPECT_EQ(Why(image::Load(image)).find("header: checksum at byte 32 is "), 0u);
}

TEST(Image, RefusesTruncatedImage) {
  const std::string image = qmx::WriteImage(image::FullLibrary());
  for (std::size_t size = 0; size < image.size(); ++size) {
    const std::string why = Why(image::Load(image.substr(0, size)));
    if (size < qmx::kImageHeaderSize) {
      ASSERT_EQ(why, "header at byte " + std::to_string(size) + " is truncated; allowed: 64 bytes");
    } else {
      ASSERT_NE(why.find("the image is truncated"), std::string::npos) << size << ": " << why;
    }
  }
}

TEST(Image, RefusesTrailingBytes) {
  EXPECT_NE(Why(image::Load(qmx::WriteImage(image::FullLibrary()) + std::string(8, '\0'))).find("bytes follow the end"),
            std::string::npos);
}

TEST(Image, RefusesFlippedBit) {
  const std::string image = qmx::WriteImage(image::FullLibrary());
  for (std::size_t bit = 0; bit < 8 * image.size(); ++bit) {
    std::string damaged = image;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
    ASSERT_FALSE(image::Load(damaged).metalib) << "bit " << bit;
  }
}

// An image that is accepted must be safe to use: its names, ids or versions differ.
TEST(Image, FlippedBitWithValidChecksumIsRefusedOrHarmless) {
  const std::string image = qmx::WriteImage(image::FullLibrary());
  std::size_t accepted = 0;
  std::size_t refused = 0;
  for (std::size_t bit = 8 * qmx::kImageHeaderSize; bit < 8 * image.size(); ++bit) {
    std::string damaged = image;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
    image::UpdateChecksum(damaged);
    const ImageResult result = image::Load(damaged);
    ++(result.metalib ? accepted : refused);
    if (!result.metalib) continue;
    ASSERT_LE(image::ReadEverything(result.metalib->get()), result.metalib->size()) << "bit " << bit;
  }
  EXPECT_GT(accepted, 0u);
  EXPECT_GT(refused, accepted);
}

TEST(Image, EnforcesLimits) {
  const std::string image = qmx::WriteImage(image::FullLibrary());
  const auto load = [&](const qmx::Limits& limits) {
    auto copy = std::make_unique<char[]>(image.size());
    image.copy(copy.get(), image.size());
    return Why(qmx::LoadImage(std::move(copy), image.size(), limits));
  };
  EXPECT_EQ(load({.max_bytes = image.size()}), "accepted");
  EXPECT_EQ(load({.max_bytes = 100}), "file at byte 0 has " + std::to_string(image.size()) + " bytes; allowed: at most 100");
  EXPECT_EQ(load({.max_depth = 3}), "accepted");
  EXPECT_NE(load({.max_depth = 2}).find("structures nested up to 2 levels deep"), std::string::npos);
}

TEST(Image, ReportsFilesThatCannotBeRead) {
  EXPECT_EQ(Why(qmx::ReadImage("no such file")), "file at byte 0 cannot be read: No such file or directory");
  EXPECT_EQ(Why(qmx::ReadImage(-1)), "file at byte 0 cannot be read: Bad file descriptor");
  EXPECT_EQ(Why(qmx::ReadImage(testing::TempDir())), "file at byte 0 cannot be read: Is a directory");
  const ImageFile empty("");
  EXPECT_EQ(Why(qmx::ReadImage(empty.path())), "header at byte 0 is truncated; allowed: 64 bytes");
}

}  // namespace
