// Names that must not stand twice, each with the place of its element.
#pragma once

#include <cstddef>
#include <functional>
#include <memory_resource>
#include <string_view>
#include <vector>

namespace qmx {

class UniqueNames {
 public:
  // `element` is the offset of the element that bears the name. The name is copied.
  void Add(std::string_view name, std::size_t element);

  // Calls `report(name, element)` for every name that stood before, then forgets all.
  void ReportRepeats(const std::function<void(std::string_view, std::size_t)>& report);

 private:
  std::pmr::monotonic_buffer_resource arena_;
  std::vector<std::string_view> names_;
  std::vector<std::size_t> elements_;
};

}  // namespace qmx
