// Fixture of the tests with stand-ins: a new world and two libraries with table "mall%s".
#pragma once

#include "rules/outcome.h"
#include "rules/standalone/stand_ins.h"

namespace standalone {

using rules::Error;
using rules::ErrorLogOnly;
using rules::Info;
using rules::Outcome;
using rules::OutcomeOf;
using rules::Refused;
using rules::Warn;
using stand_ins::EntryFacts;
using stand_ins::FakeLibrary;
using stand_ins::kNull;
using stand_ins::TableFacts;
using stand_ins::TheWorld;

using Entries = std::vector<std::optional<EntryFacts>>;
using Texts = std::vector<std::string>;

// Constructed before the libraries, which register themselves in the world.
struct NewWorld {
  NewWorld() { TheWorld() = stand_ins::World(); }
};

class StandInTest : public testing::Test, protected NewWorld {
 protected:
  LPQMXMETA Old(const Entries& entries) { return old_.AddMeta("mall%s", entries); }
  LPQMXMETA New(const Entries& entries) { return new_.AddMeta("mall%s", entries); }

  FakeLibrary old_{"old"};
  FakeLibrary new_{"new"};
};

}  // namespace standalone
