// Out of memory at any allocation of the libraries: no crash, no leak (under the address sanitizer), and the input is unchanged.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "analysis/check_table_change.h"
#include "cases/case_files.h"
#include "memory/failing_memory.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"
#include "report/checked.h"
#include "report/read_source.h"
#include "report/render/render.h"
#include "vesk/closed_category.h"

namespace memory {
namespace {

std::string Example(const std::string& file) { return cases::ReadFile(KORVEL_SOURCE_DIR "/examples/shop/" + file); }

TEST(OutOfMemory, EndsReadingOfSchema) {
  const std::string text = Example("v5.xml");
  const long failures = FailEach([&] { static_cast<void>(qmx::ReadXml(text)); });
  EXPECT_GT(failures, 100);
  RecordProperty("failures", std::to_string(failures));
}

TEST(OutOfMemory, EndsReadingOfInvalidSchema) {
  std::string text = Example("v5.xml");
  text.replace(text.find("type=\"uint64\""), 13, "type=\"uint65\" colour=\"red\"");
  const long failures = FailEach([&] { static_cast<void>(qmx::ReadXml(text)); });
  EXPECT_GT(failures, 100);
  RecordProperty("failures", std::to_string(failures));
}

TEST(OutOfMemory, EndsWritingAndLoadingOfImage) {
  const qmx::Metalib library = image::FullLibrary();
  const std::string wanted = qmx::WriteImage(library);
  const long failures = FailEach([&] {
    const qmx::ImageResult opened = image::Load(qmx::WriteImage(library));
    if (!opened.metalib) throw std::runtime_error("a valid image was refused");
  });
  EXPECT_GT(failures, 2);
  EXPECT_EQ(qmx::WriteImage(library), wanted);
  RecordProperty("failures", std::to_string(failures));
}

TEST(OutOfMemory, EndsAnalysis) {
  const korvel::Source old_source = report_test::ReadSource("v6.xml", Example("v6.xml"));
  const korvel::Source new_source = report_test::ReadSource("v7.xml", Example("v7-wider-key.xml"));
  vesk::ClosedCategory log;
  const long failures = FailEach([&] {
    const auto result = korvel::CheckTableChange(
        {.sources = {old_source, new_source}, .table = "orders", .given = {}, .wants_fixes = true, .log = log.handle()});
    if (result.status != korvel::Status::kRefused) throw std::runtime_error("a refused change was allowed");
  });
  EXPECT_GT(failures, 1000);
  RecordProperty("failures", std::to_string(failures));
}

constexpr long kRenderingStep = KORVEL_SANITIZED ? 5 : 1;  // every allocation takes two minutes under the sanitizers

TEST(OutOfMemory, EndsRendering) {
  const report_test::CheckedReport checked =
      report_test::CheckExample({"wider-key", "examples/shop/v6.xml", "examples/shop/v7-wider-key.xml"});
  for (const korvel::Format& format : korvel::Formats()) {
    SCOPED_TRACE(format.name);
    const std::string wanted = format.Render(checked.report, false);
    const long failures = FailEach([&] { static_cast<void>(format.Render(checked.report, false)); }, kRenderingStep);
    EXPECT_GT(failures * kRenderingStep, 100);
    EXPECT_EQ(format.Render(checked.report, false), wanted);
    RecordProperty(format.name, std::to_string(failures));
  }
}

}  // namespace
}  // namespace memory
