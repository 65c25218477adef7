// The work entry dialog's refusals speak of its own controls: what a person
// may keep on purpose names the "Save anyway" check box, a time that may be
// a slip shows the day to type into the field, and none of them names a
// command-line option.
#include "desktop/application/WorkEntryDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "app/session/StoreSession.h"
#include "core/ledger/WorkEntry.h"
#include "desktop/testing/StoreSharingTest.h"

namespace quillmont {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class WorkEntryDialogTest : public testing::StoreSharingTest {
 protected:
  /// The dialog for the entry with `note`, as the Activity page opens it.
  std::unique_ptr<WorkEntryDialog> dialogFor(const std::string& note) {
    StoreSession session;
    for (const auto& entry : session.context().fetch<WorkEntry>()) {
      if (entry->note() != note) continue;
      History::Row row;
      row.kind = History::Row::Kind::work;
      row.id = entry->id();
      row.date = entry->startedAt();
      row.endedAt = entry->endedAt();
      row.note = entry->note();
      return std::make_unique<WorkEntryDialog>(row, session.calendar());
    }
    ADD_FAILURE() << "no entry " << note;
    return nullptr;
  }
  static void saveWithEnd(WorkEntryDialog& dialog, const QString& end) {
    dialog.end().clear();
    QTest::keyClicks(&dialog.end(), end);
    QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save), Qt::LeftButton);
  }
  static std::string line(const WorkEntryDialog& dialog, const std::string& field) {
    return dialog.problems().text(field).toStdString();
  }
};

TEST_F(WorkEntryDialogTest, KeepingOnPurposeNamesSaveAnywayAndNoOption) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"work", "add", "--start", "2026-03-04 08:00", "--end", "2026-03-04 12:00", "--note", "morning"});
  run({"work", "add", "--start", "2026-03-04 13:00", "--end", "2026-03-04 17:00", "--note", "afternoon"});
  const auto dialog = dialogFor("morning");
  ASSERT_NE(dialog, nullptr);

  saveWithEnd(*dialog, "14:00");
  EXPECT_NE(dialog->result(), QDialog::Accepted);
  EXPECT_THAT(line(*dialog, ""), HasSubstr("would overlap work"));
  EXPECT_THAT(line(*dialog, ""), HasSubstr("\u201CSave anyway\u201D"));
  EXPECT_THAT(line(*dialog, ""), Not(HasSubstr("--")));

  saveWithEnd(*dialog, "2026-03-05 09:00");
  EXPECT_THAT(line(*dialog, ""), HasSubstr("would last 25:00"));
  EXPECT_THAT(line(*dialog, ""), HasSubstr("\u201CSave anyway\u201D"));
  EXPECT_THAT(line(*dialog, ""), Not(HasSubstr("--")));

  // The check box the refusal names is the one that lifts it.
  EXPECT_EQ(dialog->anyway().accessibleName(), "Save anyway");
  EXPECT_THAT(dialog->anyway().text().remove('&').toStdString(), HasSubstr("Save anyway"));
  dialog->anyway().setChecked(true);
  saveWithEnd(*dialog, "2026-03-05 09:00");
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
}

TEST_F(WorkEntryDialogTest, AnEndAloneThatMayBeASlipShowsTheDayToTypeBesideTheEnd) {
  run({"setup", "--start", "2026-01-01", "--balance", "0"});
  run({"work", "add", "--start", "2026-03-04 08:00", "--end", "2026-03-04 12:00", "--note", "morning"});
  const auto dialog = dialogFor("morning");
  ASSERT_NE(dialog, nullptr);

  // 07:00 before an 08:00 start is the next morning: a night of 23 hours.
  saveWithEnd(*dialog, "07:00");
  EXPECT_NE(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(line(*dialog, "end"),
            "'07:00' would end the work on the next day, 2026-03-05 07:00, after 23:00; if that is meant, write the "
            "day: \u201C2026-03-05 07:00\u201D");
  EXPECT_TRUE(line(*dialog, "").empty());
}

}  // namespace
}  // namespace quillmont
