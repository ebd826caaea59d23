// The program speaks of reports all the time: Report, Settings, OneLine without the namespace.
#pragma once

namespace korvel::report {}

namespace korvel::tool {
using namespace report;
}
