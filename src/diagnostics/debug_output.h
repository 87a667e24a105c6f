// The plug-in's two text channels: formatted messages on standard output
// (DebugPrintf, flushed by its caller) and whole lines on standard output or
// standard error (flushed by the line end).
#pragma once

#include <iostream>
#include <sstream>
#include <utility>

namespace tavro::diagnostics {

// printf-style output on standard output. Does not flush: every caller
// flushes with FlushStdout() right after, so each message is out before the
// next step runs.
void DebugPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
void FlushStdout();

namespace detail {
// The line is written in one piece, so that lines from several host threads
// (or a camera worker) do not interleave.
template <typename... Items>
void WriteLine(std::ostream& stream, Items&&... items) {
  std::ostringstream line;
  (line << ... << std::forward<Items>(items));
  line << '\n';
  stream << line.str() << std::flush;
}
}  // namespace detail

// Writes the items in the stream's default form, then ends the line and
// flushes.
template <typename... Items>
void StdoutLine(Items&&... items) {
  detail::WriteLine(std::cout, std::forward<Items>(items)...);
}

template <typename... Items>
void StderrLine(Items&&... items) {
  detail::WriteLine(std::cerr, std::forward<Items>(items)...);
}

}  // namespace tavro::diagnostics
