// Reads the text of a schema file again. Tested by tests/report/file_text_test.cpp.
#include "schema/file_text.h"

#include <utility>

#include "qmx/checksum.h"
#include "schema/file_bytes.h"

namespace korvel {

FileText::FileText(std::string name, std::string path, std::size_t size, std::uint64_t checksum, std::vector<qmx::TagRange> metas)
    : name_(std::move(name)), path_(std::move(path)), size_(size), checksum_(checksum), metas_(std::move(metas)) {}

std::string_view FileText::Bytes() const {
  const std::scoped_lock lock(mutex_);
  if (keeper_ == nullptr) ReadAgain();
  return bytes_;
}

bool FileText::IsInMemory() const {
  const std::scoped_lock lock(mutex_);
  return keeper_ != nullptr;
}

void FileText::ReadAgain() const {
  // Checked before the file is opened: opening a pipe that has taken its place would wait for a writer.
  if (SizeOf(path_) != size_) RefuseModified(name_);
  const OpenFile file = OpenInput(path_);
  const std::shared_ptr<char[]> bytes(new char[size_]);
  const bool is_whole = file.size == size_ && ReadUpTo(file, bytes.get(), size_) == size_;
  if (!is_whole || qmx::Checksum(bytes.get(), size_) != checksum_) RefuseModified(name_);
  keeper_ = bytes;
  bytes_ = {bytes.get(), size_};
}

}  // namespace korvel
