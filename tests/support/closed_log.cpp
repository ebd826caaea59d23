// The log category of an analysis, for test programs that use log_capture.h instead of the logging library: it writes nothing.
// Compiled into the program itself, so that the linker takes nothing from the logging library.
#include "support/log_capture.h"
#include "vesk/log_category.h"

namespace vesk {

struct LogCategory::Instance : support::CaptureCategory {
  Instance() { SetLow(0); }
};

std::unique_ptr<LogCategory> LogCategory::Closed() {
  return std::unique_ptr<LogCategory>(new LogCategory(std::make_unique<Instance>()));
}

LogCategory::LogCategory(std::unique_ptr<Instance> instance) : instance_(std::move(instance)) {}
LogCategory::~LogCategory() = default;

LPVESKCATEGORYINST LogCategory::handle() { return instance_.get(); }

}  // namespace vesk
