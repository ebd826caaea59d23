// Names that must not stand twice, each with the place of its element.
#include "qmx_xml/unique_names.h"

#include <cstring>

#include "qmx/name_table.h"

namespace qmx {

void UniqueNames::Add(std::string_view name, std::size_t element) {
  char* copy = static_cast<char*>(arena_.allocate(name.size() + 1, 1));
  std::memcpy(copy, name.data(), name.size());
  names_.emplace_back(copy, name.size());
  elements_.push_back(element);
}

void UniqueNames::ReportRepeats(const std::function<void(std::string_view, std::size_t)>& report) {
  for (const std::uint32_t position : NameTable(names_).Repeats()) report(names_[position], elements_[position]);
  names_.clear();
  elements_.clear();
  arena_.release();
}

}  // namespace qmx
