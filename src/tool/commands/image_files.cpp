// Tested by tests/tool/compile_project_test.cpp.
#include "tool/commands/image_files.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/project_path.h"
#include "qmx/qmx_image.h"
#include "schema/file_bytes.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

namespace fs = std::filesystem;

// An image to write.
struct ImageFile {
  const Input* input;
  std::string input_path;
  fs::path path;
  std::string bytes = {};
};

// A path below a directory, or nullopt.
std::optional<fs::path> PathBelow(const std::string& directory, const std::string& path) {
  fs::path below = AbsolutePath(path).lexically_relative(AbsolutePath(directory));
  return LeadsOut(below) ? std::nullopt : std::optional(std::move(below));
}

fs::path ImagePath(const std::string& path, const Project* project, const std::string& directory) {
  std::optional<fs::path> below = PathBelow(project == nullptr ? "" : project->directory, path);
  if (path == "-" || path.starts_with("git:") || !below) {
    throw InputError{{ToolMessage(OneLine(path) + ": has no path below the directory of the " +
                                  (project == nullptr ? "call" : "project file") +
                                  " that its image could have; allowed with several files: those below it")}};
  }
  return (directory / below->replace_extension(".qmb")).lexically_normal();
}

std::vector<ImageFile> ImagesOf(const SelectedInputs& selected, const Project* project, const std::string& directory) {
  std::vector<ImageFile> images;
  std::map<fs::path, const Input*> by_path;
  for (std::size_t i = 0; i < selected.inputs.size(); ++i) {
    const Input& input = selected.inputs[i];
    const std::string& path = selected.paths[i];
    if (!input.text && selected.is_found[i] && PathBelow(directory, path)) continue;
    const ImageFile& image = images.emplace_back(ImageFile{&input, path, ImagePath(path, project, directory)});
    const auto [same, is_first] = by_path.emplace(image.path, &input);
    if (is_first) continue;
    throw InputError{{ToolMessage(OneLine(same->second->name) + " and " + OneLine(input.name) + " would have the same image, " +
                                  OneLine(image.path.string()) + "; leave one of them out")}};
  }
  if (images.empty())
    throw InputError{{ToolMessage("nothing to compile: only images in " + OneLine(directory) + " are selected")}};
  return images;
}

// The file that a path leads to, or would if it existed.
fs::path TargetOf(const fs::path& path) {
  std::error_code ignored;
  return fs::weakly_canonical(AbsolutePath(path.string()), ignored);
}

void RequireNoInput(const std::vector<ImageFile>& images) {
  std::set<fs::path> inputs;
  for (const ImageFile& image : images) inputs.insert(TargetOf(image.input_path));
  for (const ImageFile& image : images) {
    if (!inputs.contains(TargetOf(image.path))) continue;
    throw InputError{{ToolMessage(OneLine(image.path.string()) + ", the image of " + OneLine(image.input_path) +
                                  ", would replace an input; nothing was written")}};
  }
}

// Removes directories again that were created for nothing.
class CreatedDirectories {
 public:
  CreatedDirectories() = default;
  CreatedDirectories(const CreatedDirectories&) = delete;
  CreatedDirectories& operator=(const CreatedDirectories&) = delete;
  ~CreatedDirectories() {
    std::error_code ignored;
    for (; !created_.empty(); created_.pop_back()) fs::remove(created_.back(), ignored);
  }

  void Create(const fs::path& directory) {
    std::error_code error;
    if (directory.empty() || fs::is_directory(directory, error)) return;
    Create(directory.parent_path());
    const std::string fault = fs::exists(directory, error)             ? "is not a directory"
                              : fs::create_directory(directory, error) ? ""
                                                                       : error.message();
    if (!fault.empty()) throw InputError{{ToolMessage(OneLine(directory.string()) + ": " + fault + "; nothing was written")}};
    created_.push_back(directory);
  }

  void Keep() { created_.clear(); }

 private:
  std::vector<fs::path> created_;
};

}  // namespace

void RequireNoOther(const std::string& path) {
  if (SizeOf(path) == 0 || qmx::IsImage(ReadAll(OpenRegular(path)).View())) return;
  throw InputError{{ToolMessage(OneLine(path) + " exists and is not an image; allowed: an image, an empty file or a new file")}};
}

std::string WriteImages(const SelectedInputs& selected, const Project* project, const std::string& directory,
                        const BlockedSignals& signals) {
  std::vector<ImageFile> images = ImagesOf(selected, project, directory);
  RequireNoInput(images);
  std::vector<FileToWrite> files;
  for (ImageFile& image : images) {
    RequireNoOther(image.path.string());
    image.bytes = ImageOf(*image.input);
    files.push_back({image.path.string(), image.bytes});
  }
  CreatedDirectories directories;
  for (const ImageFile& image : images) directories.Create(image.path.parent_path());
  std::vector<std::string> done;
  WriteFiles(
      files, signals, [] {},
      [&](std::size_t i) {
        directories.Keep();
        done.push_back(OneLine(PathText(images[i].input->name)) + " -> " + OneLine(PathText(files[i].path)) + "\n");
      });
  return Join(done, "");
}

}  // namespace korvel::tool
