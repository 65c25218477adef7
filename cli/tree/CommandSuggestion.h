// CommandSuggestion: the command a mistyped word most likely meant, by the
// number of single-character edits between them (insertions, deletions,
// substitutions and swaps of neighbours): "reprot" means "report".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmont::CommandSuggestion {

/// The candidate nearest to `word`, when it is at most two edits away (one
/// for words of up to four characters) and no other candidate is as near.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& candidates);

/// Edits between two texts, byte by byte (command names are ASCII).
std::size_t distance(std::string_view a, std::string_view b);

}  // namespace quillmont::CommandSuggestion
