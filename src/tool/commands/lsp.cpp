// Tested by tests/lsp.
#include <unistd.h>

#include "lsp/serve.h"
#include "project/child_process.h"
#include "project/git_call.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/run_check.h"
#include "tool/io/exit.h"
#include "tool/io/termination.h"

namespace korvel::tool {
namespace {

constexpr std::chrono::seconds kGitOutputTimeout{30};  // a file system may hang

struct LspArguments {
  BaselineOption baseline;
  bool no_project = false;
  TableSettings links;
  bool is_stdio = false;

  void AddTo(ArgumentList& arguments) {
    baseline.AddTo(arguments);
    arguments.AddFlag("--no-project", no_project, "ignore project files");
    links.AddFollowTo(arguments);
    arguments.AddFlag("--stdio", is_stdio, "use standard input and output, as always; editors add this option");
  }
};

int Run(const LspArguments& arguments) {
  const TerminationSignals signals;  // editors send them, and pages of reports must be removed
  const lsp::Options options{
      .baselines = [&](const Project* project) { return arguments.baseline.For({}, project); },
      .uses_projects = !arguments.no_project,
      .links = arguments.links.links(),
      .stop = signals.descriptor(),
  };
  KeepGitOffline();
  ChildProcess::SetOutputTimeout(kGitOutputTimeout);
  try {
    return lsp::Serve(STDIN_FILENO, STDOUT_FILENO, options) ? kAllAllowed : kSomeRefused;
  } catch (const lsp::FrameError& error) {
    throw InputError{{ToolMessage(std::string("lsp: ") + error.what())}};
  }
}

}  // namespace

const Command kLspCommand{"lsp", "run the language server for editors on standard input and output", Declare<LspArguments, Run>};

}  // namespace korvel::tool
