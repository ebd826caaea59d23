// What becomes of the program when a file that it has mapped becomes shorter.
#pragma once

namespace korvel::tool {

// From now on such a file ends the program with a line on standard error and the exit code of a fault. May be called again, and
// by several threads. Nothing but the signal's handler is set: what is not called costs nothing.
void InstallSigbusHandler();

}  // namespace korvel::tool
