// Log categories on top of spdlog, which is used only here: it adds the time, synchronizes threads, decides when to flush, and
// keeps errors away from the caller. record_line.cpp formats the lines. Tested by tests/vesk/log_category_test.cpp.
#include "vesk/log_category.h"

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>

#include "vesk/record_line.h"

namespace vesk {
namespace {

constexpr char kTextPattern[] = "%Y-%m-%dT%H:%M:%S.%eZ %v";
constexpr char kJsonPattern[] = "{\"time\":\"%Y-%m-%dT%H:%M:%S.%eZ\",%v}";

std::string ErrorText(int error) { return std::system_category().message(error); }

// Writes lines to a stream that is already open. spdlog's own file sinks create missing directories, and its sinks for standard
// error ignore failures. The logger catches the exceptions.
class StreamSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  explicit StreamSink(std::FILE* stream) : stream_(stream) {}
  ~StreamSink() override { static_cast<void>(Close()); }
  StreamSink(const StreamSink&) = delete;
  StreamSink& operator=(const StreamSink&) = delete;

  // 0, or the errno of the failed write.
  int Close() {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::FILE* stream = std::exchange(stream_, nullptr);
    if (stream == nullptr) return 0;
    const int result = stream == stderr ? std::fflush(stream) : std::fclose(stream);
    return result == 0 ? 0 : errno;
  }

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    if (stream_ == nullptr) return;
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    if (std::fwrite(line.data(), 1, line.size(), stream_) != line.size()) ThrowWriteFailure();
  }

  void flush_() override {
    if (stream_ != nullptr && std::fflush(stream_) != 0) ThrowWriteFailure();
  }

 private:
  [[noreturn]] static void ThrowWriteFailure() { spdlog::throw_spdlog_ex(ErrorText(errno)); }

  std::FILE* stream_;  // null after closing
};

class FirstFailure {
 public:
  void Note(const std::string& reason) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (text_.empty()) text_ = "cannot write the log: " + reason;
  }

  std::string Text() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return text_;
  }

 private:
  mutable std::mutex mutex_;
  std::string text_;
};

// The complete message, however long it is.
std::string FormatMessage(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string message = "(a message that cannot be formatted)";
  if (length >= 0) {
    message.resize(static_cast<std::size_t>(length));
    std::vsnprintf(message.data(), message.size() + 1, format, again);
  }
  va_end(again);
  return message;
}

std::string_view TextOrEmpty(const char* text) { return text == nullptr ? std::string_view() : std::string_view(text); }

Record MakeRecord(const tagVeskEvent& event, std::string_view message) {
  Record record;
  record.priority = event.evt_priority;
  record.message = message;
  if (const vesk_loc_info_t* location = event.evt_loc) {
    record.file = TextOrEmpty(location->loc_file);
    record.line = location->loc_line;
    record.function = TextOrEmpty(location->loc_function);
  }
  return record;
}

// The destination of the records of an open category.
class LogWriter {
 public:
  LogWriter(LineFormat format, std::optional<std::size_t> max_bytes, std::FILE* stream)
      : format_(format), max_bytes_(max_bytes), sink_(std::make_shared<StreamSink>(stream)), logger_(std::string(), sink_) {
    logger_.set_level(spdlog::level::trace);
    logger_.flush_on(spdlog::level::err);
    logger_.set_pattern(format == LineFormat::kJson ? kJsonPattern : kTextPattern, spdlog::pattern_time_type::utc);
    logger_.set_error_handler([this](const std::string& reason) { failure_.Note(reason); });
  }

  bool IsOpen() const { return open_; }
  bool IsFull() const { return is_full_; }

  // Writes the record. If it does not fit any more, writes that the log stops, and nothing from then on.
  void Write(const Record& record) {
    if (is_full_) return;
    const std::string text = Format(record);
    bytes_ += text.size() + (format_ == LineFormat::kJson ? kJsonPatternBytes : kTextPatternBytes);
    is_full_ = max_bytes_ && bytes_ > *max_bytes_;
    is_full_ ? WriteEnd() : WriteLine(record.priority, text);
  }

  void Close() {
    open_ = false;
    if (const int error = sink_->Close()) failure_.Note(ErrorText(error));
  }

  void NoteFailure(const std::string& reason) { failure_.Note(reason); }
  std::string Failure() const { return failure_.Text(); }

 private:
  // What the patterns and the line end add to a record.
  static constexpr std::size_t kTextPatternBytes = 26;
  static constexpr std::size_t kJsonPatternBytes = 37;

  std::string Format(const Record& record) const { return format_ == LineFormat::kJson ? JsonMembers(record) : TextLine(record); }

  void WriteLine(int priority, const std::string& text) {
    // spdlog's level is only used for flushing: the checker's priorities are finer, and are part of the line.
    logger_.log(priority <= VESK_PRIORITY_ERROR ? spdlog::level::err : spdlog::level::info, text);
  }

  void WriteEnd() {
    const std::string message = "the log stops here: at most " + std::to_string(*max_bytes_) + " bytes are written";
    const int priority = VESK_PRIORITY_WARN;
    WriteLine(priority,
              Format({.priority = priority, .file = __FILE__, .line = __LINE__, .function = __func__, .message = message}));
  }

  LineFormat format_;
  std::optional<std::size_t> max_bytes_;
  std::atomic<std::size_t> bytes_{0};  // of all lines so far
  std::atomic<bool> is_full_{false};
  std::shared_ptr<StreamSink> sink_;
  spdlog::logger logger_;
  FirstFailure failure_;
  std::atomic<bool> open_{true};
};

}  // namespace

// What a handle points to: the record of the interface first, then private members.
struct LogCategory::Instance : VESKCATEGORYINST {
  Instance(const LogSettings& settings, std::FILE* stream)
      : VESKCATEGORYINST{nullptr, nullptr},
        min_priority(settings.min_priority.value_or(0)),
        max_priority(settings.max_priority.value_or(0)),
        writer(settings.format, settings.max_bytes, stream) {
    if (settings.min_priority) piPriorityHigh = &min_priority;
    if (settings.max_priority) piPriorityLow = &max_priority;
  }

  // From now on, the checker neither formats records nor takes the paths that only serve the log.
  void CloseBounds() {
    max_priority = 0;
    piPriorityLow = &max_priority;
  }

  bool CanWrite(int priority) const {
    const bool is_urgent_enough = piPriorityLow == nullptr || *piPriorityLow == -1 || *piPriorityLow >= priority;
    return writer.IsOpen() && is_urgent_enough && (piPriorityHigh == nullptr || *piPriorityHigh <= priority);
  }

  int min_priority = 0;
  int max_priority = 0;
  LogWriter writer;
};

std::unique_ptr<LogCategory> LogCategory::Open(const LogSettings& settings, std::string& error) {
  // "e": child processes do not inherit the file.
  std::FILE* stream = settings.file ? std::fopen(settings.file->c_str(), "ae") : stderr;
  if (stream == nullptr) {
    error = "cannot open the log '" + *settings.file + "': " + ErrorText(errno);
    return nullptr;
  }
  return std::unique_ptr<LogCategory>(new LogCategory(std::make_unique<Instance>(settings, stream)));
}

LogCategory::LogCategory(std::unique_ptr<Instance> instance) : instance_(std::move(instance)) {}
LogCategory::~LogCategory() = default;

LPVESKCATEGORYINST LogCategory::handle() { return instance_.get(); }

void LogCategory::Close() { instance_->writer.Close(); }

bool LogCategory::ReachedLimit() const { return instance_->writer.IsFull(); }

std::string LogCategory::WriteFailure() const { return instance_->writer.Failure(); }

}  // namespace vesk

int vesk_category_can_write(LPVESKCATEGORYINST category, int priority, int /*id*/, int /*cls*/) {
  return category != nullptr && static_cast<vesk::LogCategory::Instance*>(category)->CanWrite(priority) ? 1 : 0;
}

void vesk_category_logv(LPVESKCATEGORYINST category, const tagVeskEvent* event, const char* format, va_list arguments) {
  if (category == nullptr || event == nullptr || format == nullptr) return;
  auto& instance = *static_cast<vesk::LogCategory::Instance*>(category);
  vesk::LogWriter& writer = instance.writer;
  try {
    writer.Write(vesk::MakeRecord(*event, vesk::FormatMessage(format, arguments)));
    if (writer.IsFull()) instance.CloseBounds();
  } catch (const std::bad_alloc&) {
    writer.NoteFailure("out of memory");
  } catch (const std::exception& failure) {
    writer.NoteFailure(failure.what());
  }
}
