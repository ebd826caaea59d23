// korvelcheck: finds the command, runs it, writes its report and turns what happened into the exit code.
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>

#include "base/did_you_mean.h"
#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "schema/schema_file.h"
#include "tool/cli/command.h"
#include "tool/cli/exit_code.h"
#include "tool/io/output.h"
#include "tool/io/refused.h"
#include "tool/io/sigbus_handler.h"
#include "tool/io/terminate_handler.h"
#include "vesk/log_category.h"

namespace korvel::tool {
namespace {

void PrintErrors(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  static_cast<void>(WriteAll(STDERR_FILENO, text));  // there is nowhere left to complain
}

// Takes the numbers of closed standard streams, the wrong way round: using such a stream stays an error, and no file that is
// opened later gets its number.
void OccupyClosedStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(fd, F_GETFD) == -1) static_cast<void>(::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

std::string Help() {
  std::string text =
      "korvelcheck: may the tables of the Korvel store go from an old schema to a new one?\n\n"
      "Usage: korvelcheck COMMAND [OPTIONS] FILES\n\n"
      "  korvelcheck check old.xml new.xml               every table of a schema file\n"
      "  korvelcheck check --against git:origin/main     every schema file of a project\n\n"
      "Commands:\n";
  for (const Command* command : Commands()) {
    const std::string name = command->name;
    text += "  " + name + std::string(12 - name.size(), ' ') + command->summary + "\n";
  }
  return text +
         "\n'korvelcheck COMMAND --help' lists a command's options; 'korvelcheck --version' tells the version.\n"
         "Exit codes: 0 all allowed, 1 something refused, 2 the question could not be asked, 3 internal fault.\n";
}

[[noreturn]] void RefuseCommand(const std::string& name) {
  std::vector<std::string_view> known;
  for (const Command* command : Commands()) known.emplace_back(command->name);
  throw InputError{{ToolMessage("unknown command " + Quote(name) + DidYouMean(name, known)), "Try 'korvelcheck --help'."}};
}

// Libraries of the size of a file are laid out a thousand times to judge changes one by one: what one leaves serves the next,
// instead of being given back to the system.
void KeepFreedMemory() {
#ifdef __GLIBC__
  ::mallopt(M_MMAP_THRESHOLD, 32 << 20);
  ::mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
}

// Without --log, a closed category: field lengths cannot be checked without one.
std::unique_ptr<vesk::LogCategory> OpenLog(const std::optional<vesk::LogSettings>& wanted) {
  if (!wanted) return vesk::LogCategory::Closed();
  std::string error;
  std::unique_ptr<vesk::LogCategory> log = vesk::LogCategory::Open(*wanted, error);
  if (log == nullptr) throw InputError{{ToolMessage(error)}};
  return log;
}

void Write(const std::string& text, const Options& options) {
  options.output ? WriteFile(*options.output, text) : WriteStandardOutput(text);
}

void AddDumps(CommandResult& answer) {
  for (Input& input : answer.inputs) AddDump(input);
  for (const std::shared_ptr<Input>& input : answer.kept) {
    if (input != nullptr) AddDump(*input);
  }
}

int RunCommand(const Command& command, const std::vector<std::string>& arguments) {
  std::string help;
  std::optional<Options> options = ParseOptions(command, arguments, help);
  if (!options) {
    WriteStandardOutput(help);
    return kAllAllowed;
  }
  if (UsesProject(command)) options->project = ProjectOf(*options);
  RefuseOverlaps(*options, options->inputs);
  if (command.make != nullptr) {
    Write(command.make(*options), *options);
    return kAllAllowed;
  }
  if (command.tell != nullptr) {
    const TextResult told = command.tell(command, *options);
    Write(told.text, *options);
    return told.refused ? kSomeRefused : kAllAllowed;
  }
  const std::unique_ptr<vesk::LogCategory> log = OpenLog(options->log);
  // Lives as long as the process, whose end gives the memory of its schemas back faster than destructors do.
  static CommandResult& answer = *new CommandResult(command.run(command, *options, log->handle()));
  const Report& report = answer.report;
  log->Close();
  if (options->format->shows_sources) AddDumps(answer);
  for (const Input& input : answer.inputs) RequireUnchanged(input);
  Write(options->format->render(report, !options->output && CanColour()), *options);
  if (const std::string failure = log->WriteFailure(); !failure.empty()) throw std::runtime_error(failure);
  return Summarize(report).failing == 0 ? kAllAllowed : kSomeRefused;
}

int Run(const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw InputError{{ToolMessage("a command is missing"), "Try 'korvelcheck --help'."}};
  const std::string& first = arguments.front();
  if (first == "--help" || first == "-h") {
    WriteStandardOutput(Help());
  } else if (first == "--version") {
    WriteStandardOutput("korvelcheck " KORVEL_VERSION "\n");
  } else {
    const Command* const command = FindCommand(first);
    if (command == nullptr) RefuseCommand(first);
    return RunCommand(*command, {arguments.begin() + 1, arguments.end()});
  }
  return kAllAllowed;
}

}  // namespace
}  // namespace korvel::tool

int main(int argc, char** argv) {
  using namespace korvel::tool;
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is a failed write
  InstallTerminateHandler();
  InstallSigbusHandler();
  OccupyClosedStreams();
  KeepFreedMemory();
  try {
    return Run({argv + (argc > 0 ? 1 : 0), argv + argc});
  } catch (const korvel::InputError& reason) {
    PrintErrors(reason.lines);
    return kNotAsked;
  } catch (const Refused& reasons) {
    PrintErrors(reasons.lines);
    return kSomeRefused;
  } catch (const std::bad_alloc&) {
    SayOutOfMemory();
    return kFault;
  } catch (const std::exception& fault) {
    PrintErrors({korvel::ToolMessage(fault.what())});
    return kFault;
  }
}
