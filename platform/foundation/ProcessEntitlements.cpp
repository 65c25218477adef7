#include "platform/foundation/ProcessEntitlements.h"

#include "platform/foundation/JsonReader.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>

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
  using JsonReader::Path;
  using JsonReader::Type;
  auto values = std::make_shared<Values>();
  try {
    JsonReader::parse(json, [&values](JsonReader::Value& root) {
      JsonReader::forEachField(root, Path(), [&values](std::string_view key, JsonReader::Value& field, const Path& at) {
        Value value = Other{};
        const Type type = JsonReader::type(field, at);
        if (type == Type::string) {
          value = std::string(JsonReader::string(field, at));
        } else if (type == Type::array) {
          std::vector<std::string> texts;
          bool allTexts = true;
          JsonReader::forEachElement(field, at, [&](JsonReader::Value& element, const Path& elementAt) {
            allTexts = allTexts && JsonReader::type(element, elementAt) == Type::string;
            if (allTexts) texts.emplace_back(JsonReader::string(element, elementAt));
          });
          if (allTexts) value = std::move(texts);
        }
        values->emplace(std::string(key), std::move(value));  // the first of twin keys counts
      });
    });
  } catch (const JsonDecodingError&) {
    return std::nullopt;
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
