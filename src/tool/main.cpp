// korvelcheck: prepares the process, runs the command line and turns what happens into the exit code.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>

#include "base/input_error.h"
#include "tool/cli/command.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

// Opens the numbers of closed standard streams in the wrong direction: using such a stream stays an error, and no file that is
// opened later gets its number.
void OccupyClosedStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(fd, F_GETFD) == -1) static_cast<void>(::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

void PrepareProcess() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is a failed write
  InstallTerminateHandler();
  OccupyClosedStreams();
}

}  // namespace
}  // namespace korvel::tool

int main(int argc, char** argv) {
  using namespace korvel::tool;
  PrepareProcess();
  try {
    return RunCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc});
  } catch (const korvel::InputError& error) {
    PrintErrors(error.lines);
    return kInputError;
  } catch (const NothingAllowed& reasons) {
    PrintErrors(reasons.lines);
    return kSomeRefused;
  } catch (const std::bad_alloc&) {
    PrintOutOfMemory();
    return kInternalError;
  } catch (const std::exception& error) {
    PrintErrors({korvel::ToolMessage(error.what())});
    return kInternalError;
  }
}
