// URL: the parts of an absolute URL that the system reads (scheme and host),
// parsed after RFC 3986's generic syntax. A URL without "//" after its scheme
// has no host ("quillmont:settings"); an empty host counts as none.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmont {

struct URL {
  std::string absoluteString;
  std::optional<std::string> scheme;
  std::optional<std::string> host;

  /// Nothing for text that is not a URL (empty, or containing white space or controls).
  static std::optional<URL> parse(std::string_view text);
};

}  // namespace quillmont
