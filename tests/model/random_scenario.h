// Random libraries and calls.
#pragma once

#include "model/random.h"
#include "model/scenario.h"

namespace model {

// Which libraries to make.
enum class LibraryKind {
  kValid,  // valid: the checker accepts it if nothing changes
  kOdd     // the same, sometimes with invalid parts
};

// A table "t", its structures and, sometimes, a second table "u".
LibraryDecl RandomLibrary(LibraryKind kind, Random& random);

// The call of the main check that matches the library.
Call MainCheckCall(const LibraryDecl& library);

// Random calls, mostly of the main check with matching arguments.
std::vector<Call> RandomCalls(const LibraryDecl& old_library, const LibraryDecl& new_library, Random& random);

LogGate RandomGate(Random& random);

// A library, the same library after up to five changes, and calls for both.
Scenario RandomScenario(Random& random);

}  // namespace model
