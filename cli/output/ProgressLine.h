// ProgressLine: one line on standard error that tells what a long import or
// export is doing ("Decoding 12.4 MB…"), redrawn in place at each step the
// use case reports and cleared when the work is done. Shown only when
// standard error is a terminal, so logs and pipes never see it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "app/Progress.h"

namespace quillmont {

class ProgressLine {
 public:
  /// `source` is what is being read: a file's name, or empty for the store.
  explicit ProgressLine(std::string source = {}) : source_(std::move(source)) {}
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Shows `step` in words; `finished` clears the line.
  void show(const Progress::Step& step);
  /// A callback for use cases that shows each step on this line.
  Progress::Report report() {
    return [this](const Progress::Step& step) { show(step); };
  }
  void clear();

  /// The words for a step: "Reading ledger.json...", "Decoding 12.4 MB...".
  std::string text(const Progress::Step& step) const;
  /// "12.4 MB", "980 kB", "512 bytes".
  static std::string size(std::size_t bytes);

 private:
  std::string source_;
  bool shown_ = false;
};

}  // namespace quillmont
