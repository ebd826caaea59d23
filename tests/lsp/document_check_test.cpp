// The projects that the server keeps.
#include "lsp/document_check.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lsp/documents.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::lsp::DocumentChecks;
using korvel::lsp::Documents;
using korvel::lsp::OpenProject;

class DocumentChecksTest : public ServerTest {
 protected:
  void Open(const std::string& file) {
    documents_.Open({{"uri", Uri(file)}, {"languageId", "xml"}, {"version", 1}, {"text", kShop}});
  }

  void Close(const std::string& file) {
    documents_.Close(Uri(file));
    checks_.ForgetUnusedProjects();
  }

  std::weak_ptr<OpenProject> ProjectOf(const std::string& file) { return checks_.Check(*documents_.Find(Uri(file)))->project; }

  korvel::lsp::Options options_{.baselines = [](const korvel::Project*) { return std::vector<std::string>{"git:HEAD"}; }};
  Documents documents_;
  DocumentChecks checks_{options_, documents_};
};

TEST_F(DocumentChecksTest, KeepsAProjectAsLongAsADocumentIsOpen) {
  Open("shop.xml");
  Open("sub/other.xml");
  const std::weak_ptr<OpenProject> project = ProjectOf("shop.xml");
  EXPECT_EQ(project.lock(), ProjectOf("sub/other.xml").lock());
  Close("shop.xml");
  EXPECT_FALSE(project.expired());
  Close("sub/other.xml");
  EXPECT_TRUE(project.expired());
}

}  // namespace
}  // namespace lsp_test
