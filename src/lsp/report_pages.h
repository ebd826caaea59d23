// Reports as pages in files, which a browser can open.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

namespace korvel::lsp {

// Longest part of a file name that the name of its page shows, in bytes.
inline constexpr std::size_t kMaxPageName = 100;

// The files are in a directory that only the user can read. They are removed at the end of the life of this.
class ReportPages {
 public:
  ReportPages() = default;
  ReportPages(const ReportPages&) = delete;
  ReportPages& operator=(const ReportPages&) = delete;
  ~ReportPages();

  // Writes the page about the file at a path, of which there is one. Returns the path of the page. Throws std::system_error.
  std::string Write(const std::string& path, const std::string& page);

 private:
  // "shop.xml.html"; of the second file of that name, "shop.xml-2.html".
  const std::string& NameFor(const std::string& path);

  std::filesystem::path directory_;           // empty before the first page
  std::map<std::string, std::string> names_;  // of pages, by the paths of the files
};

}  // namespace korvel::lsp
