// Writes results to standard output or to files.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_sink.h"
#include "tool/io/blocked_signals.h"

namespace korvel::tool {

// Whether status words may be colored: standard output is a terminal with colors, and NO_COLOR is not set.
bool CanColor();

// Writes a result piece by piece.
using Producer = std::function<void(const TextSink& sink)>;

// Writes to standard output. Results of at most 1 MiB are written after they are complete, larger ones while they are produced. A
// closed reader is not a failure; any other failure is thrown as std::runtime_error.
void WriteStandardOutput(const Producer& produce);

// Writes a file atomically: an old file of that name stays unchanged until the new one is complete, and if anything fails, which
// is thrown as std::runtime_error, or `produce` throws. The new file takes over the permission bits of the old one. A link is
// followed.
void WriteFile(const std::string& path, const Producer& produce);

// Throws as WriteFile if it is already known that the file, or its directory, cannot be written to.
void RequireWritable(const std::string& path);

struct FileToWrite {
  std::string path;
  std::string_view text;
};

// Writes several files, all or none as far as possible: each as WriteFile does, but moves them to their places only after all are
// complete and `confirm` has returned. Calls `on_written` with the position of each moved file. A signal that arrives before the
// first file is moved stops it: it throws, and nothing was written. Then the caller's `signals` ends the program; until then, the
// caller can print what was written. Throws as WriteFile, and what `confirm` throws.
void WriteFiles(const std::vector<FileToWrite>& files, const BlockedSignals& signals, const std::function<void()>& confirm,
                const std::function<void(std::size_t position)>& on_written);

// Makes sure that the result of an earlier call does not pass for that of a call that failed. Removes a regular file; empties it
// if it cannot be removed or is the target of a link, so that the link stays. Leaves write-protected files alone, and everything
// that is no regular file.
void DiscardFile(const std::string& path);

// A text as the whole result.
inline Producer AsProducer(std::string_view text) {
  return [text](const TextSink& sink) { sink(text); };
}

}  // namespace korvel::tool
