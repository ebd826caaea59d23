#include "qmx/image_reading.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "common/meta_view.h"
#include "common/modify_table.h"
#include "qmx/image_header.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"

namespace image {
namespace {

constexpr char kFullText[] = R"(
<metalib name="mall" version="5" protocol="TLV">
  <meta name="item">
    <entry name="sku" id="1" type="string" size="32"/>
    <entry name="price" id="2" type="money" version="4"/>
  </meta>
  <meta name="money" kind="union">
    <entry name="cents" id="1" type="int64"/>
    <entry name="text" id="2" type="bytes" size="20"/>
  </meta>
  <meta name="orders" customattr="TableType=SORTLIST;ListNum=1024;DataProtocol=TLV">
    <index name="by_zone"><column entry="zone" desc="true"/><column entry="uid"/></index>
    <entry name="uid" id="1" type="uint64" customattr2="sort=1"/>
    <entry name="zone" id="2" type="uint32"/>
    <entry name="n_items" id="3" type="uint32"/>
    <index name="by_number"><column entry="n_items"/></index>
    <entry name="items" id="4" type="item" count="100" refer="n_items"/>
    <primarykey entries="uid zone"/>
    <splittablekey entries="zone uid"/>
  </meta>
</metalib>)";

class Reader {
 public:
  explicit Reader(LPQMXMETALIB library) : library_(library) {}

  std::uint64_t Run() {
    Text(reinterpret_cast<const char*>(library_->data) + library_->ptrName);
    static_cast<void>(qmx_get_metalib_version(library_));
    for (int i = 0; i < qmx_get_meta_num(library_); ++i) Meta(qmx_get_meta_by_index(library_, i));
    static_cast<void>(qmx_get_meta_by_name(library_, "no such meta"));
    return bytes_;
  }

 private:
  void Text(const char* text) {
    if (text != nullptr) bytes_ += std::strlen(text) + 1;
  }

  void Meta(LPQMXMETA meta) {
    bytes_ += sizeof(*meta);
    const char* name = qmx_get_meta_name(meta);
    Text(name);
    Text(qmx_get_meta_customattr(meta));
    SplittableKey(meta);
    for (int i = 0; i < qmx_get_entry_num(meta); ++i) Entry(qmx_get_entry_by_index(meta, i));
    for (auto* index : korvel::Indexes(meta)) {
      bytes_ += sizeof(*index);
      Text(korvel::IndexName(meta, index));
      for (auto* column : korvel::Columns(meta, index)) Member(meta, column);
    }
    for (auto* member : korvel::PrimaryKeyMembers(meta)) Member(meta, member);
    Check(qmx_get_meta_by_name(library_, name), name);
  }

  // Uses buffers of every size up to a sufficient one: the text is complete or empty, and no byte is written outside the buffer.
  void SplittableKey(LPQMXMETA meta) {
    char all[1024];
    if (qmx_get_meta_splittablekey(meta, all, sizeof(all), nullptr) != 0) return;
    const std::size_t length = std::strlen(all);
    for (std::size_t size = 0; size <= length + 1; ++size) {
      const auto exact = std::make_unique<char[]>(size);
      char* error = nullptr;
      const bool fits = qmx_get_meta_splittablekey(meta, exact.get(), size, &error) == 0;
      const char* const expected = fits ? all : "";
      const bool is_correct = size == 0 || std::strcmp(exact.get(), expected) == 0;
      if (fits != (size > length) || !is_correct || (!fits && error == nullptr)) std::abort();
    }
  }

  template <class Record>
  void Member(LPQMXMETA meta, const Record* member) {
    bytes_ += sizeof(*member);
    if (korvel::MemberName(meta, member) == nullptr) std::abort();
  }

  void Entry(LPQMXMETAENTRY entry) {
    bytes_ += sizeof(*entry);
    Text(qmx_get_entry_name(entry));
    Text(qmx_get_entry_customattr2(library_, entry));
    if (qmx_get_entry_id(entry) != entry->iID || qmx_get_entry_version(entry) != entry->iVersion ||
        qmx_get_entry_type(entry) != entry->iType || qmx_get_entry_unitsize(entry) != entry->iUnitSize ||
        qmx_get_entry_count(entry) != entry->iCount) {
      std::abort();
    }
    static_cast<void>(qmx_get_entry_name(qmx_get_entry_refer(entry)));
    static_cast<void>(qmx_get_meta_name(qmx_get_entry_type_meta(library_, entry)));
  }

  void Check(LPQMXMETA meta, const char* name) {
    for (const int created_as : {1, 2}) {
      static_cast<void>(ModifyTable().KorvelModifyTable(library_, library_, name, 0, created_as, nullptr, "3.29.0", "", 0));
      static_cast<void>(ModifyTable().CompareValue(meta, meta, library_, library_, created_as, nullptr));
    }
    static_cast<void>(ModifyTable().CheckTableMetaCompatible(library_, library_, name, nullptr));
    static_cast<void>(ModifyTable().CompareTableField(meta, meta, nullptr));
    static_cast<void>(ModifyTable().CompareSortListInfo(name, name, library_, library_, nullptr));
  }

  LPQMXMETALIB library_;
  std::uint64_t bytes_ = 0;
};

}  // namespace

qmx::Metalib FullLibrary() {
  qmx::ReadResult result = qmx::ReadXml(kFullText);
  if (!result.schema) std::abort();
  return std::move(result.schema->metalib);
}

std::uint64_t ReadEverything(LPQMXMETALIB library) { return Reader(library).Run(); }

qmx::ImageResult Load(const std::string& bytes) {
  auto copy = std::make_unique<char[]>(bytes.size());
  bytes.copy(copy.get(), bytes.size());
  return qmx::LoadImage(std::move(copy), bytes.size());
}

void UpdateChecksum(std::string& image) {
  const std::uint64_t checksum = XXH3_64bits(image.data() + qmx::kImageHeaderSize, image.size() - qmx::kImageHeaderSize);
  std::memcpy(image.data() + offsetof(qmx::ImageHeader, checksum), &checksum, sizeof(checksum));
}

}  // namespace image
