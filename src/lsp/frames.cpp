// Tested by tests/lsp/frames_test.cpp.
#include "lsp/frames.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "base/file_descriptor.h"
#include "base/text.h"

namespace korvel::lsp {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kLength = "content-length:";

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return lower;
}

// N of "Content-Length: N".
std::optional<std::size_t> LengthOf(std::string_view line) {
  if (!Lower(line).starts_with(kLength)) return std::nullopt;
  line.remove_prefix(kLength.size());
  while (line.starts_with(' ')) line.remove_prefix(1);
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
  if (error != std::errc() || end != line.data() + line.size()) {
    throw FrameError("Content-Length is " + Quote(line) + "; allowed: the length of the message in bytes");
  }
  if (length > kMaxMessage) {
    throw FrameError("a message has " + std::to_string(length) + " bytes; allowed: at most " + std::to_string(kMaxMessage));
  }
  return length;
}

}  // namespace

// Other headers, such as Content-Type, say nothing new: the text is JSON in UTF-8.
bool FrameParser::TakeHeader() {
  const std::string_view rest = std::string_view(bytes_).substr(begin_);
  const std::size_t end = rest.find("\r\n\r\n");
  if (std::min(end, rest.size()) > kMaxHeader) throw FrameError("the header of a message does not end");
  if (end == std::string_view::npos) return false;
  for (std::string_view header = rest.substr(0, end + kLineEnd.size()); !header.empty();) {
    const std::size_t line_end = header.find(kLineEnd);
    if (const auto length = LengthOf(header.substr(0, line_end))) size_ = length;
    header.remove_prefix(line_end + kLineEnd.size());
  }
  if (!size_) throw FrameError("a header has no Content-Length; allowed: messages of the language server protocol");
  begin_ += end + 2 * kLineEnd.size();
  return true;
}

std::optional<std::string> FrameParser::Next() {
  if (!size_ && !TakeHeader()) return std::nullopt;
  if (bytes_.size() - begin_ < *size_) return std::nullopt;
  std::string message = bytes_.substr(begin_, *size_);
  begin_ += *size_;
  size_.reset();
  // What was returned is dropped once it is the larger part: the cost of each byte is constant.
  if (begin_ >= bytes_.size() / 2) {
    bytes_.erase(0, begin_);
    begin_ = 0;
    if (bytes_.empty()) bytes_.shrink_to_fit();
  }
  return message;
}

std::string Framed(std::string_view message) {
  return "Content-Length: " + std::to_string(message.size()) + "\r\n\r\n" + std::string(message);
}

bool Connection::ReadSome(std::optional<std::chrono::milliseconds> timeout) {
  std::array<pollfd, 2> files{{{.fd = input_, .events = POLLIN, .revents = 0}, {.fd = stop_, .events = POLLIN, .revents = 0}}};
  const int ready = ::poll(files.data(), files.size(), timeout ? static_cast<int>(timeout->count()) : -1);
  if (ready < 0 && errno != EINTR) throw ConnectionError(errno, std::generic_category(), "cannot wait for messages");
  if (ready <= 0) return false;
  if (files[1].revents != 0) {
    has_ended_ = true;
  } else {
    Read();
  }
  return true;
}

void Connection::Read() {
  std::array<char, std::size_t{64} << 10> piece;
  const ssize_t size = ::read(input_, piece.data(), piece.size());
  if (size < 0 && errno != EINTR) throw ConnectionError(errno, std::generic_category(), "cannot read messages");
  if (size == 0) {
    has_ended_ = true;
    if (!parser_.IsBetweenMessages()) throw FrameError("the input ends inside a message");
  }
  if (size > 0) parser_.Append({piece.data(), static_cast<std::size_t>(size)});
}

void Connection::Wait(std::optional<std::chrono::milliseconds> timeout) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + timeout.value_or(std::chrono::milliseconds(0));
  while (!next_ && !has_ended_) {
    next_ = parser_.Next();
    if (next_) return;
    if (timeout)
      timeout = std::max(std::chrono::milliseconds(0), std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()));
    if (!ReadSome(timeout) && timeout) return;
  }
}

std::optional<std::string> Connection::Next() {
  if (!next_) Wait(std::chrono::milliseconds(0));
  return std::exchange(next_, std::nullopt);
}

void Connection::Write(std::string_view message) {
  const int error = WriteAll(output_, Framed(message));
  if (error != 0) throw ConnectionError(error, std::generic_category(), "cannot write a message");
}

}  // namespace korvel::lsp
