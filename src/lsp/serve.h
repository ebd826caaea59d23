// The language server, as the program starts it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "project/project.h"
#include "schema/file_below.h"

namespace korvel::lsp {

struct Options {
  // The baselines of a project, which may be null.
  std::function<std::vector<std::string>(const Project*)> baselines;
  bool uses_projects = true;  // false: schemas are checked without project files
  Links links = Links::kRefuse;
  int stop = -1;  // a descriptor; when it can be read, the server ends as at the end of the input
};

// The input is no sequence of messages. Nobody knows where the next one begins, so reading cannot go on.
struct FrameError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A message could not be read or written.
struct ConnectionError : std::system_error {
  using std::system_error::system_error;
};

// Reads messages of the language server protocol from one descriptor and writes answers and diagnostics to another one, until the
// client ends the connection. Whether it announced the end. Changes the working directory; nothing else may write to `output`.
// Throws FrameError and ConnectionError.
bool Serve(int input, int output, const Options& options);

}  // namespace korvel::lsp
