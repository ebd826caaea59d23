// The text of a schema file: in memory, or in the file until it is needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/qmx_source_map.h"

namespace korvel {

// Threads may use one object at once.
class FileText {
 public:
  // A text in memory, which `keeper` owns.
  FileText(std::shared_ptr<void> keeper, std::string_view bytes) : keeper_(std::move(keeper)), bytes_(bytes) {}

  // A text that was read from the regular file at `path` and not kept, with its qmx::Checksum and the start tags of its metas.
  // `name` is used in messages.
  FileText(std::string name, std::string path, std::size_t size, std::uint64_t checksum, std::vector<qmx::TagRange> metas);

  FileText(const FileText&) = delete;
  FileText& operator=(const FileText&) = delete;

  // The bytes; valid as long as the object. The first call for a text that was not kept reads the file again. Throws InputError
  // with one line if that fails or gives other bytes than before; then the next call tries again.
  std::string_view Bytes() const;

  // The start tag of a meta, by its position. REQUIRES: the text was not in memory from the start.
  const qmx::TagRange& MetaTag(std::uint32_t meta) const { return metas_[meta]; }

  // Whether Bytes() does not have to read the file.
  bool IsInMemory() const;

 private:
  void ReadAgain() const;

  std::string name_;
  std::string path_;
  std::size_t size_ = 0;
  std::uint64_t checksum_ = 0;
  std::vector<qmx::TagRange> metas_;

  mutable std::mutex mutex_;  // for all below
  mutable std::shared_ptr<void> keeper_;
  mutable std::string_view bytes_;
};

}  // namespace korvel
