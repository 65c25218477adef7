#include "cli/ProgressLine.h"

#include <cstdio>
#include <iostream>

#include "cli/Terminal.h"

namespace quillmont {

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(std::string_view text) {
  if (!Terminal::standardErrorIsTerminal()) return;
  std::cerr << "\r\x1b[K" << text << std::flush;
  shown_ = true;
}

void ProgressLine::clear() {
  if (!shown_) return;
  std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

std::string ProgressLine::size(std::size_t bytes) {
  char buffer[32];
  if (bytes >= 1000 * 1000) {
    std::snprintf(buffer, sizeof buffer, "%.1f MB", static_cast<double>(bytes) / 1e6);
  } else if (bytes >= 1000) {
    std::snprintf(buffer, sizeof buffer, "%.0f kB", static_cast<double>(bytes) / 1e3);
  } else {
    std::snprintf(buffer, sizeof buffer, "%zu bytes", bytes);
  }
  return buffer;
}

}  // namespace quillmont
