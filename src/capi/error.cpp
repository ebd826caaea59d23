// Errors as data. Tested by tests/capi/hostile_test.cpp, schema_test.cpp and memory_test.cpp.
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "base/input_error.h"
#include "base/text.h"
#include "capi/call.h"
#include "rule_docs/fault_rules.h"

struct kc_error {
  std::string message;
  std::vector<korvel::InputFault> faults;
  bool is_about_input = false;  // the faults have rules
};

namespace korvel::capi {
namespace {

// For all calls that run out of memory: making it takes none. Never freed; its text fits into the string object.
const kc_error kOutOfMemory{.message = "out of memory", .faults = {}};

kc_error* NewError(std::vector<InputFault> faults, bool is_about_input) {
  std::string message = Join(LinesOf(faults), "\n");
  return new kc_error{std::move(message), std::move(faults), is_about_input};
}

std::vector<InputFault> FaultWithText(const std::string& text) { return {{.text = text, .message = text}}; }

// Rethrows the exception. Returns the result and the error that stand for it.
std::pair<int, kc_error*> Describe() {
  try {
    throw;
  } catch (const ArgumentError& error) {
    return {KC_ERROR_ARGUMENT, NewError(FaultWithText(error.text), false)};
  } catch (const InputError& error) {
    return {KC_ERROR_INPUT, NewError(FaultsOfCall(error), true)};
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return {KC_ERROR_INTERNAL, NewError(FaultWithText(error.what()), false)};
  } catch (...) {
    return {KC_ERROR_INTERNAL, NewError(FaultWithText("unknown exception"), false)};
  }
}

kc_location LocationOf(const InputFault& fault) { return {fault.file.c_str(), fault.line, fault.column, 0, 0}; }

kc_fault FaultOf(const InputFault& fault, bool is_about_input) {
  return {.rule = is_about_input ? RuleOf(fault.kind).id : "",
          .text = fault.text.c_str(),
          .allowed = fault.allowed.c_str(),
          .message = fault.message.c_str(),
          .location = LocationOf(fault)};
}

}  // namespace

int ResultOfException(kc_error** error) noexcept {
  try {
    auto [result, described] = Describe();
    error != nullptr ? static_cast<void>(*error = described) : kc_error_free(described);
    return result;
  } catch (...) {
    if (error != nullptr) *error = const_cast<kc_error*>(&kOutOfMemory);
    return KC_ERROR_MEMORY;
  }
}

}  // namespace korvel::capi

const char* kc_error_message(const kc_error* error) { return error == nullptr ? "" : error->message.c_str(); }

int kc_error_fault(const kc_error* error, size_t index, kc_fault* fault, size_t size) {
  using namespace korvel::capi;
  if (error == nullptr) return Clear(fault, size, KC_ERROR_ARGUMENT);
  if (error == &kOutOfMemory && index == 0) {
    const char* const text = error->message.c_str();
    return Fill(kc_fault{"", text, "", text, {"", 0, 0, 0, 0}}, fault, size);
  }
  const auto fault_of = [&](const korvel::InputFault& one) { return FaultOf(one, error->is_about_input); };
  return FillElement(error->faults, index, fault_of, fault, size);
}

void kc_error_free(kc_error* error) {
  if (error != &korvel::capi::kOutOfMemory) delete error;
}
