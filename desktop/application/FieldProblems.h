// FieldProblems: where a form shows why its values were refused: a line
// under each field for what was wrong with that field, and one line under
// the form for a refusal of the whole request. attempt() runs a change and
// puts whatever refused it in its place, in the system's own words, with
// what can be done about it in the window's (WindowRemedies).
#pragma once

#include <functional>
#include <map>
#include <string>

#include <QString>

class QLabel;
class QWidget;

namespace quillmont {

class FieldProblems {
 public:
  /// A hidden line for the field, to put under it; `field` is how the
  /// application layer names the input ("amount", "day", "start", ...), and
  /// "" the line under the form, which shows what no field explains.
  QLabel* lineFor(const std::string& field, QWidget* parent);
  /// The field with its line right under it, as one widget to lay out.
  QWidget* withLine(QWidget* field, const std::string& name, QWidget* parent);

  /// Runs `change`; true when it went through (every line is then empty).
  /// Refused input, and a refusal that names the input the rules refused,
  /// go under that field; anything else under the form.
  bool attempt(const std::function<void()>& change);

  void clear();
  /// Shows a text on the field's line, or under the form when the form has
  /// no such field.
  void show(const std::string& field, const QString& text);
  /// What the field's line shows ("" for the line under the form).
  QString text(const std::string& field) const;

 private:
  std::map<std::string, QLabel*> lines_;
};

}  // namespace quillmont
