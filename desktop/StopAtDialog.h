// StopAtDialog: "Stop at…" for a forgotten timer: the time the work ended,
// today, stopped through the timer's use case. The dialog is modeless (the
// tray and the windows stay usable) and stays open with the refusal beside
// the time when the timer refuses it.
#pragma once

#include <QDialog>

class QLabel;
class QTimeEdit;

namespace quillmont {

class StopAtDialog final : public QDialog {
  Q_OBJECT

 public:
  explicit StopAtDialog(QWidget* parent = nullptr);

  QTimeEdit& time() const { return *time_; }
  QString refusal() const;

 public slots:
  void accept() override;

 private:
  QTimeEdit* time_;
  QLabel* refusal_;
};

}  // namespace quillmont
