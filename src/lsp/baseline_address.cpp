// Tested by tests/lsp/server_test.cpp.
#include "lsp/baseline_address.h"

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "base/uri.h"
#include "lsp/json.h"
#include "project/git.h"

namespace korvel::lsp {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kScheme = "korvelcheck:";
constexpr std::string_view kFile = "file://";

// Without "//", which editors remove if no host follows.
std::string EscapePath(const std::string& path) { return UriOf(path).substr(kFile.size()); }
std::optional<std::string> UnescapePath(const std::string& path) { return PathOf(std::string(kFile) + path); }

}  // namespace

std::string BaselineAddress(const std::string& root, const std::string& name) {
  const std::optional<GitPath> git = ParseGitPath(name);
  if (!git) return UriOf((fs::path(root) / name).lexically_normal().string());
  return std::string(kScheme) + EscapePath(fs::path(root) / git->path) + "?" + EscapePath("/" + name).substr(1);
}

std::string BaselineText(const std::string& uri) {
  const std::size_t query = uri.find('?');
  const bool is_ours = uri.starts_with(kScheme) && query != std::string::npos;
  const auto path = is_ours ? UnescapePath(uri.substr(kScheme.size(), query - kScheme.size())) : std::nullopt;
  const auto name = is_ours ? UnescapePath("/" + uri.substr(query + 1)) : std::nullopt;
  const auto git = name ? ParseGitPath(name->substr(1)) : std::nullopt;
  if (!path || !git || !path->ends_with("/" + git->path)) {
    throw RequestError(kInvalidParams, "not a file of a baseline: " + Quote(uri));
  }
  fs::current_path(path->substr(0, path->size() - git->path.size()));
  return std::string(Git().Read(*git).View());
}

}  // namespace korvel::lsp
