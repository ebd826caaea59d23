// Libraries and questions by chance.
#pragma once

#include "model/random.h"
#include "model/scenario.h"

namespace model {

// What kind of libraries are made.
enum class Taste {
  kSound,  // what a store would hold: accepted by the checker when nothing changes
  kOdd     // the same, and here and there what no store should hold
};

// A table "t", the structures in it and, at times, a second table "u".
LibraryDecl RandomLibrary(Taste taste, Random& random);

// The call of the full check that fits the library.
Question FittingQuestion(const LibraryDecl& library);

// Any calls, most of them of the full check, most of what they say fitting.
std::vector<Question> RandomQuestions(const LibraryDecl& old_library, const LibraryDecl& new_library, Random& random);

LogGate RandomGate(Random& random);

// A library, what up to five changes make of it, and questions about both.
Scenario RandomScenario(Random& random);

}  // namespace model
