#include "platform/foundation/ProcessEntitlements.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>

#include <simdjson.h>

namespace quillmont {
namespace {

// The program's own entitlements, read from their text when first asked
// for: a run that never opens a store (`--version`) does not parse them.
struct BuiltIn {
  std::mutex lock;
  std::optional<std::string_view> text;
  std::optional<std::optional<ProcessEntitlements>> parsed;
};

BuiltIn& builtInState() {
  static BuiltIn state;
  return state;
}

std::optional<ProcessEntitlements> builtIn() {
  BuiltIn& state = builtInState();
  const std::lock_guard<std::mutex> guard(state.lock);
  if (!state.text) return std::nullopt;
  if (!state.parsed) state.parsed = ProcessEntitlements::fromJSON(*state.text);
  return *state.parsed;
}

struct OverrideFile {
  std::optional<ProcessEntitlements> entitlements;
  std::optional<std::string> problem;
};

OverrideFile readOverride(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return {std::nullopt, "is a folder"};
  std::ifstream file(path, std::ios::binary);
  if (!file) return {std::nullopt, std::string("cannot be read: ") + std::strerror(errno)};
  // A handful of keys: read at most a mebibyte, and refuse more.
  constexpr std::streamsize limit = std::streamsize{1} << 20;
  std::string contents(static_cast<std::size_t>(limit) + 1, '\0');
  file.read(contents.data(), limit + 1);
  if (file.gcount() > limit) return {std::nullopt, "is larger than a megabyte"};
  contents.resize(static_cast<std::size_t>(file.gcount()));
  auto entitlements = ProcessEntitlements::fromJSON(contents);
  if (!entitlements) return {std::nullopt, "is not a JSON object"};
  return {std::move(entitlements), std::nullopt};
}

}  // namespace

std::optional<std::filesystem::path> ProcessEntitlements::overridePath() {
  const char* overridden = std::getenv("QUILLMONT_ENTITLEMENTS");
  if (overridden == nullptr || *overridden == '\0') return std::nullopt;
  return std::filesystem::path(overridden);
}

ProcessEntitlements::Source ProcessEntitlements::source() {
  if (overridePath()) return Source::overridden;
  return builtIn() ? Source::builtIn : Source::none;
}

std::optional<std::string> ProcessEntitlements::overrideProblem() {
  const auto path = overridePath();
  if (!path) return std::nullopt;
  auto problem = readOverride(*path).problem;
  if (!problem) return std::nullopt;
  return "the entitlements file " + path->string() + " named by QUILLMONT_ENTITLEMENTS " + *problem;
}

std::optional<ProcessEntitlements> ProcessEntitlements::current() {
  if (const auto path = overridePath()) return readOverride(*path).entitlements;
  return builtIn();
}

void ProcessEntitlements::embed(std::string_view json) {
  BuiltIn& state = builtInState();
  const std::lock_guard<std::mutex> guard(state.lock);
  state.text = json;
  state.parsed.reset();
}

std::optional<ProcessEntitlements> ProcessEntitlements::fromJSON(std::string_view json) {
  simdjson::dom::parser parser;
  simdjson::dom::object root;
  if (parser.parse(json.data(), json.size()).get(root)) return std::nullopt;
  auto values = std::make_shared<Values>();
  for (const auto field : root) {
    Value value = Other{};
    std::string_view text;
    simdjson::dom::array list;
    if (!field.value.get(text)) {
      value = std::string(text);
    } else if (!field.value.get(list)) {
      std::vector<std::string> texts;
      bool allTexts = true;
      for (const simdjson::dom::element element : list) {
        if (element.get(text)) {
          allTexts = false;
          break;
        }
        texts.emplace_back(text);
      }
      if (allTexts) value = std::move(texts);
    }
    values->emplace(std::string(field.key), std::move(value));  // the first of twin keys counts
  }
  return ProcessEntitlements(std::move(values));
}

std::optional<std::string> ProcessEntitlements::string(std::string_view key) const {
  const auto found = values_->find(key);
  if (found == values_->end()) return std::nullopt;
  if (const auto* text = std::get_if<std::string>(&found->second)) return *text;
  return std::nullopt;
}

std::vector<std::string> ProcessEntitlements::stringList(std::string_view key) const {
  const auto found = values_->find(key);
  if (found == values_->end()) return {};
  if (const auto* texts = std::get_if<std::vector<std::string>>(&found->second)) return *texts;
  return {};
}

}  // namespace quillmont
