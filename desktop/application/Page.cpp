#include "desktop/application/Page.h"

#include <exception>

#include <QLabel>
#include <QVBoxLayout>

#include "app/session/StoreSession.h"

namespace quillmont {

Page::Page(QWidget* parent) : QWidget(parent), layout_(new QVBoxLayout(this)), problem_(new QLabel(this)) {
  problem_->setWordWrap(true);
  problem_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  problem_->setAccessibleName("Problem");
  problem_->setFrameShape(QFrame::StyledPanel);
  problem_->setMargin(8);
  problem_->hide();
  layout_->addWidget(problem_);
}

void Page::refresh() {
  try {
    StoreSession session;
    show(session);
    problem_->clear();
    problem_->hide();
  } catch (const std::exception& error) {
    clear();
    problem_->setText("The time bank could not be read: " + QString::fromUtf8(error.what()));
    problem_->show();
  }
}

QString Page::problem() const { return problem_->text(); }

}  // namespace quillmont
