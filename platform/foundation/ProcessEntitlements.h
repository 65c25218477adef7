// ProcessEntitlements: what this process is entitled to (shared application
// groups, cloud containers, a development team). There are no code
// signatures here: the entitlements are a JSON object read from the file
// named by $QUILLMONT_ENTITLEMENTS, else from share/quillmont/entitlements.json
// beside the program's installation prefix (<exe dir>/../share/quillmont/).
// A missing or unreadable file means the process has no entitlements.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <simdjson.h>

namespace quillmont {

class ProcessEntitlements {
 public:
  /// The entitlements of the running process; nothing when none can be read.
  static std::optional<ProcessEntitlements> current();
  /// Entitlements from a JSON object; nothing when the text is not one.
  static std::optional<ProcessEntitlements> fromJSON(std::string_view json);
  /// Where current() looks when $QUILLMONT_ENTITLEMENTS is not set.
  static std::filesystem::path installedPath();

  /// The text under `key`; nothing when missing or not text.
  std::optional<std::string> string(std::string_view key) const;
  /// The texts under `key`; empty when missing or not a list of texts.
  std::vector<std::string> stringList(std::string_view key) const;

 private:
  explicit ProcessEntitlements(std::string json) : json_(std::move(json)) {}
  std::string json_;
};

}  // namespace quillmont
