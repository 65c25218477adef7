#include "platform/foundation/URL.h"

#include <algorithm>

namespace quillmont {
namespace {

bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isSchemeCharacter(char c) { return isAlpha(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; }

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  if (text.empty()) return std::nullopt;
  if (std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == 0x7f; })) {
    return std::nullopt;
  }
  URL url{std::string(text), std::nullopt, std::nullopt};
  std::string_view rest = text;
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos && colon > 0 && isAlpha(text[0]) &&
      std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), isSchemeCharacter)) {
    url.scheme = std::string(text.substr(0, colon));
    rest = text.substr(colon + 1);
  }
  if (rest.starts_with("//")) {
    std::string_view authority = rest.substr(2, rest.find_first_of("/?#", 2) - 2);
    if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) authority.remove_prefix(at + 1);
    if (authority.starts_with('[')) {
      authority = authority.substr(0, authority.find(']') + 1);
    } else if (const std::size_t port = authority.find(':'); port != std::string_view::npos) {
      authority = authority.substr(0, port);
    }
    if (!authority.empty()) url.host = std::string(authority);
  }
  return url;
}

}  // namespace quillmont
