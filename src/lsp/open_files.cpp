// Tested by tests/lsp/server_test.cpp.
#include "lsp/open_files.h"

#include <algorithm>
#include <utility>

namespace korvel::lsp {
namespace {

class OpenFiles : public FileTree {
 public:
  OpenFiles(std::unique_ptr<FileTree> disk, std::string top, Links links, const Documents& documents)
      : disk_(std::move(disk)), top_(std::move(top)), links_(links), documents_(documents) {}

  bool HasFile(const std::string& path) const override { return Find(path) != nullptr || disk_->HasFile(path); }
  bool HasName(const std::string& path) const override { return Find(path) != nullptr || disk_->HasName(path); }
  std::vector<std::string> Below(const std::string& directory) const override { return disk_->Below(directory); }
  std::set<std::string> IgnoredFiles() const override { return disk_->IgnoredFiles(); }
  std::string Display(const std::string& path) const override { return disk_->Display(path); }

  Bytes Read(const std::string& path) override {
    const Document* const document = Find(path);
    const bool is_refused = KindBelow(top_, path, links_) == EntryKind::kLink;
    return document == nullptr || is_refused ? disk_->Read(path) : BytesOf(document->text.bytes());
  }

  Bytes ReadProject(const std::string& path) override {
    const Document* const document = Find(path);
    if (document == nullptr) return disk_->ReadProject(path);
    if (disk_->HasName(path)) disk_->ReadProject(path);  // which may refuse it
    return BytesOf(document->good_text);
  }

 private:
  const Document* Find(const std::string& path) const { return documents_.FindPath(top_ + "/" + path); }

  std::unique_ptr<FileTree> disk_;
  std::string top_;
  Links links_;
  const Documents& documents_;
};

}  // namespace

std::unique_ptr<FileTree> WithOpenFiles(std::unique_ptr<FileTree> disk, const std::string& top, Links links,
                                        const Documents& documents) {
  return std::make_unique<OpenFiles>(std::move(disk), top, links, documents);
}

Bytes BytesOf(const std::string& text) {
  Bytes bytes;
  bytes.size = text.size();
  bytes.data = std::make_unique_for_overwrite<char[]>(bytes.size);
  std::ranges::copy(text, bytes.data.get());
  return bytes;
}

}  // namespace korvel::lsp
