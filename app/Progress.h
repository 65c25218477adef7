// Progress: what a long use case (an export, an import, a sync exchange) is
// doing, reported as it goes so that each host can show it its own way (a
// line on a terminal, a progress bar). Use cases take a `Progress::Report`,
// which may be empty; `finished` comes last when anything was reported.
#pragma once

#include <cstddef>
#include <functional>

namespace quillmont::Progress {

enum class Stage { reading, decoding, merging, encoding, writing, finished };

struct Step {
  Stage stage = Stage::finished;
  /// The size of the document being read, decoded or written; 0 if unknown.
  std::size_t bytes = 0;
  /// The records being encoded or merged; 0 if unknown.
  std::size_t records = 0;
  friend bool operator==(const Step&, const Step&) = default;
};

using Report = std::function<void(const Step&)>;

/// Calls `report` with `step` when there is a report to call.
inline void tell(const Report& report, const Step& step) {
  if (report) report(step);
}

}  // namespace quillmont::Progress
