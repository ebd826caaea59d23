// Shrinks scenarios in small steps; a step is kept if the condition still holds. Tested by model_test.cpp.
#include "model/shrink.h"

#include <algorithm>
#include <set>

#include "model/edits.h"

namespace model {
namespace {

using Step = std::function<void(Scenario&)>;
using Steps = std::vector<Step>;

// A step for both libraries, and one for each alone.
void AddForSides(const std::function<void(LibraryDecl&)>& edit, Steps& steps) {
  steps.push_back([edit](Scenario& scenario) { edit(scenario.old_library), edit(scenario.new_library); });
  steps.push_back([edit](Scenario& scenario) { edit(scenario.new_library); });
  steps.push_back([edit](Scenario& scenario) { edit(scenario.old_library); });
}

void EditMeta(const std::string& name, const std::function<void(MetaDecl&)>& edit, LibraryDecl& library) {
  for (MetaDecl& meta : library.metas) {
    if (meta.name == name) edit(meta);
  }
}

void AddMetaSteps(const std::string& meta, Steps& steps) {
  AddForSides(
      [meta](LibraryDecl& library) { std::erase_if(library.metas, [&](const MetaDecl& one) { return one.name == meta; }); },
      steps);
  steps.push_back([meta](Scenario& scenario) {
    for (const MetaDecl& one : scenario.old_library.metas) {
      if (one.name == meta)
        EditMeta(
            meta, [&one](MetaDecl& other) { other = one; }, scenario.new_library);
    }
  });
  const auto add = [&](void (*edit)(MetaDecl&)) {
    AddForSides([meta, edit](LibraryDecl& library) { EditMeta(meta, edit, library); }, steps);
  };
  add([](MetaDecl& one) { one.attr = std::nullopt; });
  add([](MetaDecl& one) { one.indexes.clear(); });
  add([](MetaDecl& one) { one.split.clear(); });
  add([](MetaDecl& one) { one.key.clear(); });
  add([](MetaDecl& one) { one.is_union = false; });
  add([](MetaDecl& one) { one.without_key_list = false; });
  add([](MetaDecl& one) { one.odd_key_count = std::nullopt; });
}

void AddFieldSteps(const std::string& meta, const std::string& field, Steps& steps) {
  AddForSides(
      [meta, field](LibraryDecl& library) {
        EditMeta(
            meta, [&](MetaDecl& one) { RemoveField(field, one); }, library);
      },
      steps);
  AddForSides(
      [meta, field](LibraryDecl& library) {
        EditMeta(
            meta, [&](MetaDecl& one) { std::erase(one.key, field); }, library);
      },
      steps);
  const auto add = [&](void (*edit)(FieldDecl&)) {
    const auto edit_field = [field, edit](MetaDecl& one) {
      for (FieldDecl& each : one.fields) {
        if (each.name == field) edit(each);
      }
    };
    AddForSides([meta, edit_field](LibraryDecl& library) { EditMeta(meta, edit_field, library); }, steps);
  };
  add([](FieldDecl& one) { one = FieldDecl{.name = one.name, .id = one.id}; });
  add([](FieldDecl& one) { one.type = "uint32", one.size = 0; });
  add([](FieldDecl& one) { one.size = std::min<std::uint64_t>(one.size, 8); });
  add([](FieldDecl& one) { one.id = -1; });
  add([](FieldDecl& one) { one.version = 1; });
  add([](FieldDecl& one) { one.count = 1; });
  add([](FieldDecl& one) { one.refer.clear(); });
  add([](FieldDecl& one) { one.attr2 = std::nullopt; });
  add([](FieldDecl& one) { one.nameless = one.without_structure = false; });
  add([](FieldDecl& one) { one.odd_unit_size = std::nullopt; });
  add([](FieldDecl& one) { one.odd_count = std::nullopt; });
  add([](FieldDecl& one) { one.odd_flags = std::nullopt; });
}

// Removes one field by position, so that one of two with the same name can be removed.
void AddPositionStep(const std::string& meta, std::size_t position, Steps& steps) {
  const auto erase = [position](MetaDecl& one) {
    if (position < one.fields.size()) one.fields.erase(one.fields.begin() + static_cast<std::ptrdiff_t>(position));
  };
  AddForSides([meta, erase](LibraryDecl& library) { EditMeta(meta, erase, library); }, steps);
}

void AddCallSteps(std::size_t number, Steps& steps) {
  for (std::size_t i = 0; i < number; ++i) {
    const auto position = static_cast<std::ptrdiff_t>(i);
    const auto edit = [&steps, i](void (*change)(Call&)) {
      steps.push_back([i, change](Scenario& scenario) { change(scenario.calls[i]); });
    };
    if (number > 1) {
      steps.push_back([position](Scenario& scenario) { scenario.calls.erase(scenario.calls.begin() + position); });
    }
    edit([](Call& call) { call.whitelist.clear(); });
    edit([](Call& call) { call.server.clear(); });
    edit([](Call& call) { call.without_old = call.without_new = false; });
    edit([](Call& call) { call.old_table = call.new_table = "t"; });
    edit([](Call& call) { call.list_num = 0; });
  }
}

Steps AllSteps(const Scenario& scenario) {
  Steps steps;
  AddCallSteps(scenario.calls.size(), steps);
  steps.push_back([](Scenario& one) { one.gate = {}; });
  steps.push_back([](Scenario& one) { one.new_library = one.old_library; });
  steps.push_back([](Scenario& one) { one.old_library = one.new_library; });
  AddForSides([](LibraryDecl& library) { library.flag = 0; }, steps);
  AddForSides([](LibraryDecl& library) { library.version = 1; }, steps);
  std::set<std::string> metas;
  for (const LibraryDecl* library : {&scenario.old_library, &scenario.new_library}) {
    for (const MetaDecl& meta : library->metas) {
      if (metas.insert(meta.name).second) AddMetaSteps(meta.name, steps);
      std::set<std::string> fields;
      for (const FieldDecl& field : meta.fields) {
        if (fields.insert(field.name).second) AddFieldSteps(meta.name, field.name, steps);
        AddPositionStep(meta.name, static_cast<std::size_t>(&field - meta.fields.data()), steps);
      }
    }
  }
  return steps;
}

bool AreSame(const Scenario& one, const Scenario& other) {
  return one.old_library == other.old_library && one.new_library == other.new_library && one.gate == other.gate &&
         one.calls == other.calls;
}

// Takes one step that makes the scenario smaller. Returns false if there is none.
bool MakeSmaller(Scenario& scenario, const std::function<bool(const Scenario&)>& holds) {
  for (const Step& step : AllSteps(scenario)) {
    Scenario smaller = scenario;
    step(smaller);
    if (AreSame(smaller, scenario) || !holds(smaller)) continue;
    scenario = std::move(smaller);
    return true;
  }
  return false;
}

}  // namespace

Scenario Shrink(Scenario scenario, const std::function<bool(const Scenario&)>& holds) {
  // No other step reverts "new = old" and "old = new", but the limit also ends any cycle of two steps.
  for (int i = 0; i < 2000 && MakeSmaller(scenario, holds); ++i) {
  }
  return scenario;
}

}  // namespace model
