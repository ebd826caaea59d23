// What the program says when it can do nothing else any more.
#pragma once

namespace korvel::tool {

// Says on standard error that memory ran out. Needs none.
void SayOutOfMemory();

// From now on an exception that cannot be caught, as of memory that runs out in a destructor, ends the program with a line on
// standard error and the exit code of a fault, not with a signal. Files that are half written do not stay: none is open where
// such an exception can come from.
void InstallTerminateHandler();

}  // namespace korvel::tool
