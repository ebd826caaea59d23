// How the program ends when it cannot go on: a line on standard error and kInternalError instead of a signal.
#pragma once

namespace korvel::tool {

// Prints on standard error that memory ran out. Allocates nothing.
void PrintOutOfMemory();

// From now on, an exception that nothing can catch (for example if memory runs out in a destructor) ends the program in this way.
// No half-written file is left behind: none is open where such an exception can occur.
void InstallTerminateHandler();

// From now on, a mapped file that becomes shorter while it is read (SIGBUS) ends the program in this way. May be called
// repeatedly and by several threads.
void InstallSigbusHandler();

}  // namespace korvel::tool
