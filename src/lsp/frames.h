// Messages of the language server protocol on a stream: "Content-Length: N", an empty line, N bytes.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "lsp/serve.h"

namespace korvel::lsp {

// Longest message in bytes. A file of the largest size that the reader takes fits, with every byte escaped.
inline constexpr std::size_t kMaxMessage = std::size_t{512} << 20;

// Longest header of a message in bytes.
inline constexpr std::size_t kMaxHeader = 4096;

// Splits a stream into messages.
class FrameParser {
 public:
  void Append(std::string_view bytes) { bytes_.append(bytes); }

  // The next complete message. Nullopt if more bytes are needed. Throws FrameError.
  std::optional<std::string> Next();

  // Whether the stream may end here.
  bool IsBetweenMessages() const { return !size_ && bytes_.size() == begin_; }

 private:
  bool TakeHeader();

  std::string bytes_;
  std::size_t begin_ = 0;            // of what was not returned yet
  std::optional<std::size_t> size_;  // of the message whose header was read
};

// The bytes of a message with its header.
std::string Framed(std::string_view message);

// A pair of descriptors that messages are read from and written to. When `stop` can be read, the input counts as ended. Owns none
// of them.
class Connection {
 public:
  Connection(int input, int output, int stop = -1) : input_(input), output_(output), stop_(stop) {}

  // Waits until a message is complete, the input ends, or `timeout` has passed; without one, as long as it takes. Reads what has
  // arrived. Throws FrameError, ConnectionError.
  void Wait(std::optional<std::chrono::milliseconds> timeout);

  // The next message that has arrived. Does not wait. Throws FrameError.
  std::optional<std::string> Next();

  bool HasEnded() const { return has_ended_; }

  // Throws ConnectionError, for example if nobody reads any more.
  void Write(std::string_view message);

 private:
  // Whether something could be read or has ended the input.
  bool ReadSome(std::optional<std::chrono::milliseconds> timeout);
  void Read();

  int input_;
  int output_;
  int stop_;
  FrameParser parser_;
  std::optional<std::string> next_;  // read ahead by Wait
  bool has_ended_ = false;
};

}  // namespace korvel::lsp
