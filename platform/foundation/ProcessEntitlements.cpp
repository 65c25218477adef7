#include "platform/foundation/ProcessEntitlements.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace quillmont {
namespace {

// The small document is parsed afresh per question: entitlement answers are
// never cached, and the file is a few hundred bytes.
template <class Visit>
void withValue(const std::string& json, std::string_view key, Visit visit) {
  simdjson::dom::parser parser;
  simdjson::dom::element root;
  if (parser.parse(json).get(root)) return;
  simdjson::dom::element value;
  if (root.at_key(key).get(value)) return;
  visit(value);
}

}  // namespace

std::filesystem::path ProcessEntitlements::installedPath() {
  std::error_code error;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return executable.parent_path().parent_path() / "share" / "quillmont" / "entitlements.json";
}

std::optional<ProcessEntitlements> ProcessEntitlements::current() {
  const char* overridden = std::getenv("QUILLMONT_ENTITLEMENTS");
  const std::filesystem::path path = overridden != nullptr && *overridden != '\0' ? overridden : installedPath();
  if (path.empty()) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::ostringstream contents;
  contents << file.rdbuf();
  return fromJSON(contents.str());
}

std::optional<ProcessEntitlements> ProcessEntitlements::fromJSON(std::string_view json) {
  simdjson::dom::parser parser;
  simdjson::dom::element root;
  if (parser.parse(json.data(), json.size()).get(root) || !root.is_object()) return std::nullopt;
  return ProcessEntitlements(std::string(json));
}

std::optional<std::string> ProcessEntitlements::string(std::string_view key) const {
  std::optional<std::string> result;
  withValue(json_, key, [&](simdjson::dom::element value) {
    std::string_view text;
    if (!value.get(text)) result = std::string(text);
  });
  return result;
}

std::vector<std::string> ProcessEntitlements::stringList(std::string_view key) const {
  std::vector<std::string> result;
  withValue(json_, key, [&](simdjson::dom::element value) {
    simdjson::dom::array list;
    if (value.get(list)) return;
    for (const simdjson::dom::element element : list) {
      std::string_view text;
      if (element.get(text)) {
        result.clear();
        return;
      }
      result.emplace_back(text);
    }
  });
  return result;
}

}  // namespace quillmont
