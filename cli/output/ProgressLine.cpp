#include "cli/output/ProgressLine.h"

#include <cstdio>
#include <iostream>

#include "cli/output/Terminal.h"

namespace quillmont {

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(const Progress::Step& step) {
  if (step.stage == Progress::Stage::finished) {
    clear();
    return;
  }
  if (!Terminal::standardErrorIsTerminal()) return;
  std::cerr << "\r\x1b[K" << text(step) << std::flush;
  shown_ = true;
}

void ProgressLine::clear() {
  if (!shown_) return;
  std::cerr << "\r\x1b[K" << std::flush;
  shown_ = false;
}

std::string ProgressLine::text(const Progress::Step& step) const {
  switch (step.stage) {
    case Progress::Stage::reading: return source_.empty() ? "Reading the store..." : "Reading " + source_ + "...";
    case Progress::Stage::decoding: return "Decoding " + size(step.bytes) + "...";
    case Progress::Stage::merging: return "Merging...";
    case Progress::Stage::encoding:
      return "Encoding " + std::to_string(step.records) + (step.records == 1 ? " record..." : " records...");
    case Progress::Stage::writing: return "Writing " + size(step.bytes) + "...";
    case Progress::Stage::finished: break;
  }
  return {};
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
