#include "read_source.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "qmx/qmx_xml.h"

namespace report_test {

korvel::Source ReadSource(const std::string& name, const std::string& text) {
  qmx::ReadResult read = qmx::ReadXml(text);
  for (const qmx::ReadError& error : read.errors) ADD_FAILURE() << name << ":" << error.location.line << ": " << error.text;
  if (!read.schema) throw std::runtime_error(name + " is no schema");
  korvel::SchemaText schema = korvel::KeptText(text, std::move(read.schema->source_map));
  korvel::Source source{name, std::move(read.schema->metalib), std::move(schema), {}};
  korvel::ListTables(source);
  return source;
}

}  // namespace report_test
