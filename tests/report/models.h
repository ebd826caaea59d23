// Makes sources of models, and random pairs of models.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "analysis/diff/diff.h"
#include "schema/model.h"

namespace report_test {

// A library without text, as from an image. REQUIRES: it can be laid out.
korvel::Source SourceOf(const std::string& name, const korvel::Model& model);

// The bytes of a library.
std::string BytesOf(const qmx::Metalib& metalib);

struct ModelPair {
  korvel::Model old_model;
  korvel::Model new_model;
};

// Table "t" and up to six structures, which may be shared; the new side is the old one after a few changes of any kind.
ModelPair RandomModels(std::mt19937_64& random);

// Gives a structure of the model another name; no change for a table without structures.
void RenameStructure(korvel::Model& model, std::mt19937_64& random);

// A number from an environment variable.
std::uint64_t NumberFrom(const char* variable, std::uint64_t otherwise);

// Calls `test` with random models until it fails: with KORVEL_PAIRS pairs, or else `pairs`. Each pair has its own seed, from
// KORVEL_SEED or else `seed` on; a failure names it. Returns the number of pairs.
std::uint64_t TestRandomModels(std::uint64_t seed, std::uint64_t pairs,
                               const std::function<void(ModelPair& models, std::mt19937_64& random)>& test);

// "entry-type orders.uid: type of uid: uint32 -> uint64", one line for each edit, with the edits that it needs ("needs 0 2").
std::vector<std::string> Lines(const korvel::Difference& difference);

}  // namespace report_test
