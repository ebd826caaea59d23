// A plugin of clang-tidy: checks look at the declarations of the project only. Without it, they also look at every declaration of
// the included system headers, which takes more than half of the time, and drop what they find there. Built and loaded by
// scripts/lint.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/Basic/SourceManager.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <memory>
#include <string>
#include <vector>

namespace {

class ScopeSetter : public clang::ASTConsumer {
  void HandleTranslationUnit(clang::ASTContext& context) override {
    std::vector<clang::Decl*> own;
    for (clang::Decl* const declaration : context.getTranslationUnitDecl()->decls()) {
      if (!context.getSourceManager().isInSystemHeader(declaration->getLocation())) own.push_back(declaration);
    }
    context.setTraversalScope(own);
  }
};

class ScopeAction : public clang::PluginASTAction {
  std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance&, llvm::StringRef) override {
    return std::make_unique<ScopeSetter>();
  }
  bool ParseArgs(const clang::CompilerInstance&, const std::vector<std::string>&) override { return true; }
  ActionType getActionType() override { return AddBeforeMainAction; }
};

const clang::FrontendPluginRegistry::Add<ScopeAction> registration("own-declarations", "");

}  // namespace
