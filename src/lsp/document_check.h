// What the checker says about an open document: as `korvelcheck check FILE` in the project of the file, as `korvelcheck lint
// FILE` without a baseline.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "lsp/documents.h"
#include "lsp/open_project.h"
#include "report/result/fold.h"
#include "report/result/issues.h"
#include "schema/input.h"

namespace korvel::lsp {

// The result of a check, and what it borrows.
struct DocumentCheck {
  std::uint64_t revision = 0;    // of the document
  bool is_schema = true;         // false: nothing was checked, the document is something else
  std::string excluded_by = {};  // the location in the project file that excludes the document; then it is no schema
  std::string root;              // the working directory of the check
  std::string name;              // of the document in the report
  std::shared_ptr<OpenProject> project = nullptr;
  std::vector<std::shared_ptr<const Source>> sources = {};
  std::vector<ComparedFile> compared = {};
  Report report = {};
  std::unique_ptr<FoldedReport> folded = nullptr;
  std::unique_ptr<Issues> issues = nullptr;
};

// Checks documents. Keeps the projects that they belong to, each with a process of git.
class DocumentChecks {
 public:
  // Both must outlive it.
  DocumentChecks(const Options& options, const Documents& documents) : options_(options), documents_(documents) {}

  // Changes the working directory. Faults of every kind are in the report. A report that shows whole files needs Texts::kShown.
  std::shared_ptr<const DocumentCheck> Check(const Document& document, Texts texts = Texts::kWhenNeeded);

  // Forgets the projects in whose directories no document is open.
  void ForgetUnusedProjects();

 private:
  std::shared_ptr<OpenProject> ProjectAt(const std::string& root);
  void Run(const Document& document, Texts texts, DocumentCheck& check);

  const Options& options_;
  const Documents& documents_;
  SourceCache baseline_files_;
  std::map<std::string, std::shared_ptr<OpenProject>> projects_;  // by root
};

}  // namespace korvel::lsp
