#include "cli/tree/CommandSuggestion.h"

#include <algorithm>

namespace quillmont::CommandSuggestion {

std::size_t distance(std::string_view a, std::string_view b) {
  // Optimal string alignment distance: three rows of the usual table.
  std::vector<std::size_t> beforePrevious(b.size() + 1);
  std::vector<std::size_t> previous(b.size() + 1);
  std::vector<std::size_t> current(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) previous[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t substitution = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, substitution});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        current[j] = std::min(current[j], beforePrevious[j - 2] + 1);
      }
    }
    std::swap(beforePrevious, previous);
    std::swap(previous, current);
  }
  return previous[b.size()];
}

std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& candidates) {
  const std::size_t allowed = word.size() <= 4 ? 1 : 2;
  std::optional<std::string> best;
  std::size_t bestDistance = allowed + 1;
  bool tied = false;
  for (const std::string& candidate : candidates) {
    const std::size_t edits = distance(word, candidate);
    if (edits < bestDistance) {
      best = candidate;
      bestDistance = edits;
      tied = false;
    } else if (edits == bestDistance) {
      tied = true;
    }
  }
  if (tied || bestDistance == 0) return std::nullopt;
  return best;
}

}  // namespace quillmont::CommandSuggestion
