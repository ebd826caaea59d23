// Runs a check. src/project and the libraries below it do the check.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "capi/schema.h"
#include "capi/settings.h"
#include "report/result/report.h"

namespace korvel::capi {

// What to check. It can be checked again: the result is the same.
struct Request {
  std::vector<std::shared_ptr<const LoadedSchema>> schemas;  // old and new, or one to lint
  std::vector<std::string> tables;                           // empty: all
  CheckSettings settings;

  bool IsLint() const { return schemas.size() == 1; }
};

// The report about `inputs`, which are the schemas of the request or copies with more text. It borrows them. Throws InputError.
Report RunCheck(const Request& request, const std::vector<const Input*>& inputs);

// The schemas of the request as they are.
std::vector<const Input*> InputsOf(const Request& request);

// Copies of them in which each image has a text, for formats that show whole files.
std::vector<Input> InputsWithText(const Request& request);

}  // namespace korvel::capi
