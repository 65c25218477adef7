// Terminal: where the program's output goes and how it looks. Data (tables,
// reports, CSV, JSON, archives) goes to standard output; messages
// (confirmations, warnings, errors, progress) go to standard error. Colour is
// used only when standard output is a terminal, TERM is not "dumb" and
// NO_COLOR is not set (to a non-empty value); progress is shown only when standard error is a terminal.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillmont::Terminal {

enum class Style { plain, bold, dim, positive, negative, accent };

bool standardOutputHasColour();
bool standardErrorIsTerminal();
/// The columns of the terminal standard output goes to, or else of COLUMNS
/// when it is set; nothing when output has no width (a file, a pipe).
std::optional<std::size_t> width();

/// `text` wrapped in the style's escape sequences when standard output has colour.
std::string styled(std::string_view text, Style style);
/// The style for a signed amount: positive above zero, negative below, plain at zero.
Style styleForAmount(double value);

/// `text` as it may be shown on a terminal when it comes from elsewhere
/// (another machine's name, a note or holiday from a file, a typed link):
/// control characters, which a terminal would obey (move the cursor, clear
/// the screen, set the title), are written as visible escapes instead:
/// "\x1B" for C0 controls and DEL, "\u009B" for C1 controls.
std::string escaped(std::string_view text);

/// One line of data on standard output.
void print(std::string_view line);
/// Data on standard output as it is (lines end in their own line feeds).
void write(std::string_view text);
/// One message line on standard error.
void message(std::string_view line);
/// "quillmont: warning: <text>" on standard error.
void warning(std::string_view text);

}  // namespace quillmont::Terminal
