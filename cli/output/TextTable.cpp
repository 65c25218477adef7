#include "cli/output/TextTable.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quillmont {

void TextTable::addRow(std::vector<Cell> cells) {
  cells.resize(columns_.size(), Cell(""));
  rows_.push_back(std::move(cells));
}

void TextTable::addRule() { rows_.emplace_back(); }

std::vector<std::size_t> TextTable::columnWidths() const {
  std::vector<std::size_t> widths(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) widths[i] = Text::displayWidth(columns_[i].title);
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Text::displayWidth(row[i].text));
  }
  return widths;
}

std::size_t TextTable::width() const {
  const std::vector<std::size_t> widths = columnWidths();
  std::size_t total = 0;
  for (const std::size_t width : widths) total += width;
  return total + 2 * (widths.empty() ? 0 : widths.size() - 1);
}

std::string TextTable::render() const {
  const std::vector<std::size_t> widths = columnWidths();

  std::string result;
  const auto appendLine = [&](const std::vector<Cell>& cells, bool header) {
    std::string line;
    std::size_t pendingBlanks = 0;  // written only when something visible follows
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string& text = cells[i].text;
      const std::size_t padding = widths[i] - Text::displayWidth(text);
      const bool right = columns_[i].alignment == Alignment::right;
      if (i > 0) pendingBlanks += 2;
      if (right) pendingBlanks += padding;
      if (!text.empty()) {
        line.append(pendingBlanks, ' ');
        pendingBlanks = 0;
        line += Terminal::styled(text, header ? Terminal::Style::bold : cells[i].style);
      }
      if (!right) pendingBlanks += padding;
    }
    result += line;
    result += '\n';
  };

  std::vector<Cell> header;
  for (const auto& column : columns_) header.emplace_back(column.title);
  appendLine(header, true);
  const std::size_t totalWidth = width();
  for (const auto& row : rows_) {
    if (row.empty()) {
      for (std::size_t i = 0; i < totalWidth; ++i) result += "\u2500";
      result += '\n';
    } else {
      appendLine(row, false);
    }
  }
  return result;
}

}  // namespace quillmont
