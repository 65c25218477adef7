#include "cli/output/Terminal.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace quillmont::Terminal {

bool standardOutputHasColour() {
  static const bool hasColour = [] {
    const char* noColour = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool dumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return (noColour == nullptr || *noColour == '\0') && !dumb && isatty(STDOUT_FILENO) == 1;
  }();
  return hasColour;
}

std::optional<std::size_t> width() {
  winsize size{};
  if (isatty(STDOUT_FILENO) == 1 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  if (const char* columns = std::getenv("COLUMNS"); columns != nullptr && *columns != '\0') {
    char* end = nullptr;
    const long value = std::strtol(columns, &end, 10);
    if (*end == '\0' && value > 0 && value < 100000) return static_cast<std::size_t>(value);
  }
  return std::nullopt;
}

bool standardErrorIsTerminal() {
  static const bool isTerminal = isatty(STDERR_FILENO) == 1;
  return isTerminal;
}

std::string styled(std::string_view text, Style style) {
  if (style == Style::plain || !standardOutputHasColour()) return std::string(text);
  const char* start = "";
  switch (style) {
    case Style::plain: break;
    case Style::bold: start = "\x1b[1m"; break;
    case Style::dim: start = "\x1b[2m"; break;
    case Style::positive: start = "\x1b[32m"; break;
    case Style::negative: start = "\x1b[31m"; break;
    case Style::accent: start = "\x1b[36m"; break;
  }
  std::string result(start);
  result += text;
  result += "\x1b[0m";
  return result;
}

Style styleForAmount(double value) {
  if (value > 0) return Style::positive;
  if (value < 0) return Style::negative;
  return Style::plain;
}

std::string escaped(std::string_view text) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F) {
      result += "\\x";
      result += digits[byte >> 4];
      result += digits[byte & 0xF];
    } else if (byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0x80 &&
               static_cast<unsigned char>(text[at + 1]) <= 0x9F) {
      const auto control = static_cast<unsigned char>(text[++at]);  // U+0080 ... U+009F in UTF-8
      result += "\\u00";
      result += digits[control >> 4];
      result += digits[control & 0xF];
    } else {
      result += static_cast<char>(byte);
    }
  }
  return result;
}

void print(std::string_view line) {
  std::cout << line << '\n';
}

void write(std::string_view text) { std::cout << text; }

void message(std::string_view line) {
  std::cout.flush();
  std::cerr << line << '\n';
}

void warning(std::string_view text) {
  std::cout.flush();
  std::cerr << "quillmont: warning: " << text << '\n';
}

}  // namespace quillmont::Terminal
