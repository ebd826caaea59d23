// The C interface (korvelcheck.h) for C++17 and later: handles that free themselves, exceptions for results. Header only; what
// the functions mean is documented there.
//
//   const korvelcheck::Schema old_schema = korvelcheck::Schema::FromFile("orders_v6.xml");
//   const korvelcheck::Schema new_schema = korvelcheck::Schema::FromFile("orders_v7.xml");
//   const korvelcheck::Report report = korvelcheck::Check(old_schema, new_schema);
//   for (const kc_finding& finding : report.Findings()) std::cout << finding.summary << '\n' << finding.suggestion << '\n';
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvelcheck/korvelcheck.h"

namespace korvelcheck {

// A call failed. what() is kc_error_message.
class Error : public std::runtime_error {
 public:
  // Takes ownership of the error.
  Error(int result, kc_error* error)
      : std::runtime_error(kc_error_message(error)), result_(result), error_(error, kc_error_free) {}

  int result() const { return result_; }  // KC_ERROR_...

  // Valid as long as a copy of this exception.
  std::vector<kc_fault> Faults() const {
    std::vector<kc_fault> faults;
    kc_fault fault;
    for (std::size_t i = 0; kc_error_fault(error_.get(), i, &fault, sizeof(fault)) == KC_OK; ++i) faults.push_back(fault);
    return faults;
  }

 private:
  int result_;
  std::shared_ptr<kc_error> error_;
};

namespace internal {

template <class Function, class... Arguments>
void Call(Function function, Arguments... arguments) {
  kc_error* error = nullptr;
  if (const int result = function(arguments..., &error); result != KC_OK) throw Error(result, error);
}

// Throws std::logic_error for an object whose handle was moved to another one.
template <class Handle, class Struct>
Struct Filled(int (*function)(const Handle*, Struct*, std::size_t), const Handle* handle) {
  Struct filled = {};
  if (function(handle, &filled, sizeof(filled)) != KC_OK) throw std::logic_error("korvelcheck: a handle that was moved from");
  return filled;
}

// A zero byte would silently end a name.
inline const char* Name(const std::string& name) {
  if (name.find('\0') != std::string::npos) throw std::invalid_argument("korvelcheck: a name with a zero byte");
  return name.c_str();
}

template <class Handle, void (*free)(Handle*)>
struct Deleter {
  void operator()(Handle* handle) const { free(handle); }
};

template <class Handle, void (*free)(Handle*)>
using Owned = std::unique_ptr<Handle, Deleter<Handle, free>>;

}  // namespace internal

class Schema {
 public:
  static Schema FromMemory(const std::string& name, std::string_view bytes) {
    kc_schema* schema = nullptr;
    internal::Call(kc_schema_load, internal::Name(name), static_cast<const void*>(bytes.data()), bytes.size(), &schema);
    return Schema(schema);
  }
  static Schema FromFile(const std::string& path) {
    kc_schema* schema = nullptr;
    internal::Call(kc_schema_load_file, internal::Name(path), &schema);
    return Schema(schema);
  }

  const kc_schema* get() const { return schema_.get(); }

  kc_schema_info Info() const { return internal::Filled(kc_schema_get, get()); }
  std::vector<std::string> Tables() const {
    std::vector<std::string> tables;
    while (const char* const table = kc_schema_table(get(), tables.size())) tables.emplace_back(table);
    return tables;
  }
  std::string_view Image() const {
    const void* data = nullptr;
    std::size_t size = 0;
    internal::Call(kc_schema_image, get(), &data, &size);
    return {static_cast<const char*>(data), size};
  }

 private:
  explicit Schema(kc_schema* schema) : schema_(schema) {}
  internal::Owned<kc_schema, kc_schema_free> schema_;
};

class Settings {
 public:
  Settings() {
    kc_settings* settings = nullptr;
    internal::Call(kc_settings_new, &settings);
    settings_.reset(settings);
  }

  const kc_settings* get() const { return settings_.get(); }

  // For every table.
  Settings& Set(const std::string& key, const std::string& value) { return Set(nullptr, key, value); }
  Settings& SetFor(const std::string& table, const std::string& key, const std::string& value) {
    return Set(internal::Name(table), key, value);
  }

 private:
  Settings& Set(const char* table, const std::string& key, const std::string& value) {
    internal::Call(kc_settings_set, settings_.get(), table, internal::Name(key), internal::Name(value));
    return *this;
  }
  internal::Owned<kc_settings, kc_settings_free> settings_;
};

class Report {
 public:
  // Takes ownership of the report.
  explicit Report(kc_report* report) : report_(report) {}

  const kc_report* get() const { return report_.get(); }

  kc_report_info Info() const { return internal::Filled(kc_report_get, get()); }
  bool IsAllowed() const { return Info().verdict == KC_VERDICT_ALLOWED; }
  bool Passes() const { return Info().passes == 1; }

  std::vector<kc_table> Tables() const {
    return List<kc_table>([this](std::size_t i, kc_table* to) { return kc_report_table(get(), i, to, sizeof(*to)); });
  }
  std::vector<kc_finding> Findings() const {
    return List<kc_finding>([this](std::size_t i, kc_finding* to) { return kc_report_finding(get(), i, to, sizeof(*to)); });
  }
  std::vector<kc_affected> Affected(std::size_t finding) const {
    return List<kc_affected>(
        [&](std::size_t i, kc_affected* to) { return kc_report_affected(get(), finding, i, to, sizeof(*to)); });
  }
  std::vector<kc_fix> Fixes(std::size_t finding) const {
    return List<kc_fix>([&](std::size_t i, kc_fix* to) { return kc_report_fix(get(), finding, i, to, sizeof(*to)); });
  }

  std::string_view Text(const std::string& format) const {
    const char* text = nullptr;
    std::size_t size = 0;
    internal::Call(kc_report_text, get(), internal::Name(format), &text, &size);
    return {text, size};
  }

 private:
  template <class Element, class Function>
  static std::vector<Element> List(Function fill) {
    std::vector<Element> elements;
    Element element;
    while (fill(elements.size(), &element) == KC_OK) elements.push_back(element);
    return elements;
  }
  internal::Owned<kc_report, kc_report_free> report_;
};

// All tables if `tables` is empty.
inline Report Check(const Schema& old_schema, const Schema& new_schema, const std::vector<std::string>& tables = {},
                    const kc_settings* settings = nullptr) {
  std::vector<const char*> names;
  for (const std::string& table : tables) names.push_back(internal::Name(table));
  kc_report* report = nullptr;
  internal::Call(kc_check, old_schema.get(), new_schema.get(),
                 static_cast<const char* const*>(names.empty() ? nullptr : names.data()), names.size(), settings, &report);
  return Report(report);
}

inline Report Lint(const Schema& schema, const kc_settings* settings = nullptr) {
  kc_report* report = nullptr;
  internal::Call(kc_lint, schema.get(), settings, &report);
  return Report(report);
}

}  // namespace korvelcheck
