// The files of a project as the editor shows them: open documents instead of what is saved.
#pragma once

#include <memory>
#include <string>

#include "lsp/documents.h"
#include "project/file_tree.h"

namespace korvel::lsp {

// `disk` with the texts of the documents, which must outlive the tree. `top` is the directory of the tree. Of a project file with
// an error, the last text without one is used. What is refused on the disk, such as a link, is also refused if it is open.
std::unique_ptr<FileTree> WithOpenFiles(std::unique_ptr<FileTree> disk, const std::string& top, Links links,
                                        const Documents& documents);

Bytes BytesOf(const std::string& text);

}  // namespace korvel::lsp
