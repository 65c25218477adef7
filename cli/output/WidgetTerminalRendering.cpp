#include "cli/output/WidgetTerminalRendering.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace quillmont::WidgetTerminalRendering {
namespace {

constexpr double largeTextPoints = 30;
constexpr double pointsPerLine = 14;

// Three-line digits for the characters of a signed duration.
struct Glyph {
  char32_t character;
  std::array<std::string_view, 3> rows;
};
constexpr std::array<Glyph, 13> glyphs{{
    {U'0', {"┏━┓", "┃ ┃", "┗━┛"}}, {U'1', {" ╻ ", " ┃ ", " ╹ "}}, {U'2', {"╺━┓", "┏━┛", "┗━╸"}},
    {U'3', {"╺━┓", "╺━┫", "╺━┛"}}, {U'4', {"╻ ╻", "┗━┫", "  ╹"}}, {U'5', {"┏━╸", "┗━┓", "╺━┛"}},
    {U'6', {"┏━╸", "┣━┓", "┗━┛"}}, {U'7', {"╺━┓", "  ┃", "  ╹"}}, {U'8', {"┏━┓", "┣━┫", "┗━┛"}},
    {U'9', {"┏━┓", "┗━┫", "╺━┛"}}, {U'+', {"   ", "╺╋╸", "   "}}, {U'\u2212', {"   ", "╺━╸", "   "}},
    {U':', {" ", "╏", " "}},
}};

std::u32string decoded(std::string_view text) {
  std::u32string result;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const int length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t code = length == 1 ? lead : lead & (0x3F >> (length - 1));
    for (int k = 1; k < length && i + static_cast<std::size_t>(k) < text.size(); ++k) {
      code = (code << 6) | (static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]) & 0x3F);
    }
    result += code;
    i += static_cast<std::size_t>(length);
  }
  return result;
}

// The three lines of `text` in large digits; nothing when a character has no glyph.
std::optional<std::array<std::string, 3>> largeDigits(const std::string& text) {
  std::array<std::string, 3> rows;
  char32_t previous = 0;
  for (const char32_t character : decoded(text)) {
    const auto glyph = std::find_if(glyphs.begin(), glyphs.end(),
                                    [character](const Glyph& candidate) { return candidate.character == character; });
    if (glyph == glyphs.end()) return std::nullopt;
    // One column between glyphs; the colon sits close to its digits.
    const bool gap = previous != 0 && character != U':' && previous != U':';
    for (std::size_t row = 0; row < 3; ++row) {
      if (gap) rows[row] += ' ';
      rows[row] += glyph->rows[row];
    }
    previous = character;
  }
  return rows;
}

std::string_view symbol(const std::string& systemImage) {
  if (systemImage == "leaf.fill") return "❦";
  if (systemImage == "plus") return "+";
  if (systemImage == "minus") return "\u2212";
  return "";
}

class Renderer {
 public:
  explicit Renderer(bool colour) : colour_(colour) {}

  std::vector<std::string> block(const View& view, int width, int height) const {
    std::vector<std::string> lines;
    for (int i = 0; i < topPadding(view); ++i) lines.emplace_back();
    switch (view.kind) {
      case View::Kind::column: {
        // Spare lines go to flexible children, first come first served.
        int spare = height - minimumHeight(view, width);
        for (const View& child : view.children) {
          int childHeight = minimumHeight(child, width);
          if (isFlexible(child) && spare > 0) {
            const int flexible = std::max(1, spare / std::max(1, flexibleCount(view)));
            childHeight += std::min(spare, flexible);
            spare -= std::min(spare, flexible);
          }
          auto childLines = block(child, width, childHeight);
          lines.insert(lines.end(), childLines.begin(), childLines.end());
        }
        break;
      }
      case View::Kind::text:
        if (auto large = largeRows(view, width)) {
          lines.insert(lines.end(), large->begin(), large->end());
        } else {
          for (auto& line : wrapped(view, width)) lines.push_back(styledText(view, line));
        }
        break;
      case View::Kind::spacer:
        for (int i = 0; i < height; ++i) lines.emplace_back();
        break;
      default:
        lines.push_back(line(view, width));
        break;
    }
    return lines;
  }

  int minimumHeight(const View& view, int width) const {
    int height = topPadding(view);
    switch (view.kind) {
      case View::Kind::column:
        for (const View& child : view.children) height += minimumHeight(child, width);
        return height;
      case View::Kind::spacer:
        return height + static_cast<int>(view.minLength.value_or(0) / pointsPerLine);
      case View::Kind::text:
        return height + (largeRows(view, width) ? 3 : static_cast<int>(wrapped(view, width).size()));
      default:
        return height + 1;
    }
  }

 private:
  static int topPadding(const View& view) { return static_cast<int>(view.padding.top / pointsPerLine); }
  static bool isLarge(const View& view) {
    return view.font.style == Font::Style::system && view.font.size >= largeTextPoints;
  }
  static bool isFlexible(const View& view) {
    if (view.kind == View::Kind::spacer) return true;
    if (view.kind != View::Kind::column) return false;
    return std::any_of(view.children.begin(), view.children.end(), isFlexible);
  }
  static int flexibleCount(const View& column) {
    return static_cast<int>(std::count_if(column.children.begin(), column.children.end(), isFlexible));
  }

  std::optional<std::array<std::string, 3>> largeRows(const View& view, int width) const {
    if (!isLarge(view)) return std::nullopt;
    auto rows = largeDigits(view.text);
    if (!rows || columns((*rows)[0]) > width) return std::nullopt;
    for (auto& row : *rows) row = styledText(view, row);
    return rows;
  }

  std::vector<std::string> wrapped(const View& view, int width) const {
    const std::u32string text = decoded(view.text);
    std::vector<std::string> lines;
    std::u32string current;
    std::u32string word;
    auto flushWord = [&] {
      if (word.empty()) return;
      if (!current.empty() && static_cast<int>(current.size() + 1 + word.size()) > width) {
        lines.push_back(encoded(current));
        current.clear();
      }
      if (!current.empty()) current += U' ';
      current += word;
      word.clear();
    };
    for (const char32_t character : text) {
      if (character == U' ') {
        flushWord();
      } else {
        word += character;
      }
    }
    flushWord();
    if (!current.empty() || lines.empty()) lines.push_back(encoded(current));
    if (view.lineLimit > 0 && static_cast<int>(lines.size()) > view.lineLimit) lines.resize(view.lineLimit);
    for (auto& line : lines) line = clipped(line, width);
    return lines;
  }

  // A row, an image, a button or a text on one line.
  std::string line(const View& view, int width) const {
    switch (view.kind) {
      case View::Kind::row: return row(view, width);
      case View::Kind::text: return styledText(view, clipped(view.text, width));
      case View::Kind::image: return tinted(std::string(symbol(view.systemImage)), view.tint, false);
      case View::Kind::button: {
        std::string face = view.labelStyle == View::LabelStyle::iconOnly
                               ? std::string(symbol(view.systemImage))
                               : std::string(symbol(view.systemImage)) + " " + view.text;
        return tinted("[ " + face + " ]", view.tint, view.buttonStyle == View::ButtonStyle::borderedProminent);
      }
      default: return "";
    }
  }

  std::string row(const View& view, int width) const {
    const int gap = view.spacing ? (*view.spacing > 0 ? 1 : 0) : 1;
    std::vector<std::string> parts;
    int used = 0;
    int spacers = 0;
    for (const View& child : view.children) {
      if (child.kind == View::Kind::spacer) {
        ++spacers;
        parts.emplace_back();
      } else {
        parts.push_back(line(child, width));
        used += columns(parts.back());
      }
    }
    used += gap * std::max(0, static_cast<int>(parts.size()) - 1);
    int spare = std::max(0, width - used);
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (i > 0) result += std::string(static_cast<std::size_t>(gap), ' ');
      if (view.children[i].kind == View::Kind::spacer) {
        const int share = spare / std::max(1, spacers--);
        result += std::string(static_cast<std::size_t>(share), ' ');
        spare -= share;
      } else {
        result += parts[i];
      }
    }
    return result;
  }

  std::string styledText(const View& view, const std::string& text) const {
    if (!colour_ || text.empty()) return text;
    std::string codes;
    if (view.font.weight >= Font::Weight::semibold) codes += "\x1b[1m";
    if (view.isSecondary) codes += "\x1b[2m";
    return codes.empty() ? text : codes + text + "\x1b[0m";
  }

  std::string tinted(const std::string& text, const std::optional<Color>& tint, bool filled) const {
    if (!colour_ || !tint || text.empty()) return text;
    const char* colourCode = tint->name == Color::Name::mint ? "36" : tint->name == Color::Name::red ? "31" : "";
    if (*colourCode == '\0') return text;
    return std::string("\x1b[") + (filled ? "7;" : "") + colourCode + "m" + text + "\x1b[0m";
  }

  static std::string encoded(const std::u32string& text) {
    std::string result;
    for (const char32_t code : text) {
      if (code < 0x80) {
        result += static_cast<char>(code);
      } else if (code < 0x800) {
        result += static_cast<char>(0xC0 | (code >> 6));
        result += static_cast<char>(0x80 | (code & 0x3F));
      } else if (code < 0x10000) {
        result += static_cast<char>(0xE0 | (code >> 12));
        result += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        result += static_cast<char>(0x80 | (code & 0x3F));
      } else {
        result += static_cast<char>(0xF0 | (code >> 18));
        result += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        result += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        result += static_cast<char>(0x80 | (code & 0x3F));
      }
    }
    return result;
  }

  static std::string clipped(const std::string& text, int width) {
    const std::u32string characters = decoded(text);
    if (static_cast<int>(characters.size()) <= width) return text;
    return encoded(characters.substr(0, static_cast<std::size_t>(std::max(0, width - 1)))) + "…";
  }

  bool colour_;
};

}  // namespace

Size contentSize(WidgetFamily family) {
  return family == WidgetFamily::systemSmall ? Size{24, 7} : Size{48, 7};
}

int columns(const std::string& text) {
  int count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == 0x1b) {  // skip an escape sequence up to its final letter
      while (i < text.size() && !((text[i] >= 'A' && text[i] <= 'Z') || (text[i] >= 'a' && text[i] <= 'z'))) ++i;
      continue;
    }
    if ((byte & 0xC0) != 0x80) ++count;
  }
  return count;
}

std::vector<std::string> render(const WidgetContent& content, WidgetFamily family, bool colour) {
  const Size size = contentSize(family);
  const Renderer renderer(colour);
  auto lines = renderer.block(content.root, size.columns, size.lines);
  lines.resize(static_cast<std::size_t>(size.lines));
  std::string rule;
  for (int i = 0; i < size.columns + 2; ++i) rule += "─";
  std::vector<std::string> framed;
  framed.push_back("╭" + rule + "╮");
  for (const auto& line : lines) {
    const int pad = std::max(0, size.columns - columns(line));
    framed.push_back("│ " + line + std::string(static_cast<std::size_t>(pad), ' ') + " │");
  }
  framed.push_back("╰" + rule + "╯");
  return framed;
}

}  // namespace quillmont::WidgetTerminalRendering
