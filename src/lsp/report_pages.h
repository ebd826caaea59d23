// Reports as pages in files, which a browser can open.
#pragma once

#include <filesystem>
#include <string>

namespace korvel::lsp {

// The files are in a directory that only the user can read. They are removed at the end of the life of this.
class ReportPages {
 public:
  ReportPages() = default;
  ReportPages(const ReportPages&) = delete;
  ReportPages& operator=(const ReportPages&) = delete;
  ~ReportPages();

  // Writes a page about the file at a path. Returns the path of the page. Throws std::system_error.
  std::string Write(const std::string& path, const std::string& page);

 private:
  std::filesystem::path directory_;  // empty before the first page
};

}  // namespace korvel::lsp
