// ProcessEntitlements: what this process is entitled to (shared application
// groups, cloud containers, a development team). There are no code
// signatures here; instead each program carries its entitlements the way a
// signature would: fixed when it is built. The program hands them over
// before main() runs (see cmake's quillmont_embed_entitlements), so no
// installation file can change which store a person sees.
//
// For tests and special set-ups, $QUILLMONT_ENTITLEMENTS names a JSON file
// that replaces them. An override that cannot be read or parsed gives the
// process no entitlements at all; programs check overrideProblem() at start
// and refuse to run with one, so a damaged override never silently moves a
// person to another, empty store.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillmont {

class ProcessEntitlements {
 public:
  enum class Source { builtIn, overridden, none };

  /// The entitlements of the running process; nothing when it has none.
  static std::optional<ProcessEntitlements> current();
  /// Where current() takes them from.
  static Source source();
  /// The override file named by $QUILLMONT_ENTITLEMENTS, if any.
  static std::optional<std::filesystem::path> overridePath();
  /// Why the override cannot be used; nothing when there is none or it is usable.
  static std::optional<std::string> overrideProblem();
  /// Fixes the program's own entitlements; called once, before main().
  /// Text that is not a JSON object gives the program none. The text is
  /// read when the entitlements are first asked for, so it must last as
  /// long as the program (a literal).
  static void embed(std::string_view json);

  /// Entitlements from a JSON object; nothing when the text is not one.
  static std::optional<ProcessEntitlements> fromJSON(std::string_view json);

  /// The text under `key`; nothing when missing or not text.
  std::optional<std::string> string(std::string_view key) const;
  /// The texts under `key`; empty when missing or not a list of texts.
  std::vector<std::string> stringList(std::string_view key) const;

 private:
  /// A value of another type than text or a list of texts.
  struct Other {};
  using Value = std::variant<std::string, std::vector<std::string>, Other>;

  using Values = std::map<std::string, Value, std::less<>>;

  explicit ProcessEntitlements(std::shared_ptr<const Values> values) : values_(std::move(values)) {}
  /// Shared: copies of one process's entitlements cost nothing.
  std::shared_ptr<const Values> values_;
};

}  // namespace quillmont
