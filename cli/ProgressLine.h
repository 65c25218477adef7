// ProgressLine: one line on standard error that tells what a long import or
// export is doing ("Decoding 12.4 MB…"), redrawn in place and cleared when
// the work is done. Shown only when standard error is a terminal, so logs
// and pipes never see it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillmont {

class ProgressLine {
 public:
  ProgressLine() = default;
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(std::string_view text);
  void clear();

  /// "12.4 MB", "980 kB", "512 bytes".
  static std::string size(std::size_t bytes);

 private:
  bool shown_ = false;
};

}  // namespace quillmont
