// TextTable: rows of text in aligned columns for the terminal, two blanks
// between columns, a bold header, optional rule lines. Widths count
// terminal columns (a CJK character takes two), and styles are applied after padding, so
// coloured cells line up with plain ones.
#pragma once

#include <string>
#include <vector>

#include "cli/output/Terminal.h"

namespace quillmont {

class TextTable {
 public:
  enum class Alignment { left, right };
  struct Column {
    std::string title;
    Alignment alignment = Alignment::left;
  };
  struct Cell {
    Cell(std::string text_, Terminal::Style style_ = Terminal::Style::plain)  // NOLINT: plain text is a cell
        : text(std::move(text_)), style(style_) {}
    Cell(const char* text_) : text(text_) {}  // NOLINT
    std::string text;
    Terminal::Style style = Terminal::Style::plain;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

  /// Missing cells are blank; cells beyond the columns are ignored.
  void addRow(std::vector<Cell> cells);
  /// A line of dashes across the table.
  void addRule();
  bool empty() const { return rows_.empty(); }

  /// Every line ends with a line feed; trailing blanks are dropped.
  std::string render() const;
  /// The terminal columns of the widest line (the rules' length).
  std::size_t width() const;

 private:
  std::vector<std::size_t> columnWidths() const;

  std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;  // an empty row is a rule
};

}  // namespace quillmont
