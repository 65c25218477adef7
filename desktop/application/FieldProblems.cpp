#include "desktop/application/FieldProblems.h"

#include <exception>

#include <QLabel>
#include <QVBoxLayout>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "desktop/application/WindowRemedies.h"

namespace quillmont {
namespace {

void prepare(QLabel* line, const QString& name) {
  line->setWordWrap(true);
  line->setTextInteractionFlags(Qt::TextSelectableByMouse);
  line->setAccessibleName(name);
  QFont font = line->font();
  font.setItalic(true);
  line->setFont(font);
  line->hide();
}

}  // namespace

QLabel* FieldProblems::lineFor(const std::string& field, QWidget* parent) {
  auto* line = new QLabel(parent);
  prepare(line, field.empty() ? QString("Problem") : QString::fromStdString("Problem with " + field));
  lines_[field] = line;
  return line;
}

QWidget* FieldProblems::withLine(QWidget* field, const std::string& name, QWidget* parent) {
  auto* box = new QWidget(parent);
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(2);
  layout->addWidget(field);
  layout->addWidget(lineFor(name, box));
  // A label's mnemonic that names the box reaches the field.
  box->setFocusProxy(field);
  return box;
}

bool FieldProblems::attempt(const std::function<void()>& change) {
  clear();
  try {
    change();
    return true;
  } catch (const InvalidInput& invalid) {
    show(invalid.field(), WindowRemedies::sentence(invalid.reason(), invalid.remedy()));
  } catch (const Refusal& refusal) {
    show(refusal.field(), WindowRemedies::sentence(refusal.what(), refusal.remedy()));
  } catch (const std::exception& error) {
    show("", "The time bank could not be changed: " + QString::fromUtf8(error.what()));
  }
  return false;
}

void FieldProblems::clear() {
  for (auto& [field, line] : lines_) {
    line->clear();
    line->hide();
  }
}

void FieldProblems::show(const std::string& field, const QString& text) {
  auto found = lines_.find(field);
  if (found == lines_.end()) found = lines_.find("");
  if (found == lines_.end()) return;
  QLabel* line = found->second;
  line->setText(text);
  line->show();
}

QString FieldProblems::text(const std::string& field) const {
  const auto found = lines_.find(field);
  return found != lines_.end() ? found->second->text() : QString();
}

}  // namespace quillmont
