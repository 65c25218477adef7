#include "app/bookings/Bookings.h"

#include <cmath>
#include <cstdlib>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/input/TypedValue.h"
#include "app/records/RecordLookup.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "core/engine/LedgerTotal.h"
#include "core/engine/ManualLedgerMigration.h"
#include "core/ledger/AdjustmentCategoryOption.h"
#include "core/ledger/AdjustmentCategoryValidation.h"
#include "core/ledger/BalanceAdjustmentKind.h"
#include "core/ledger/CustomAdjustmentCategoryConfiguration.h"
#include "core/ledger/NoteValidation.h"
#include "core/ledger/TimeBankTransactionController.h"
#include "platform/foundation/Text.h"

namespace quillmont::Bookings {
namespace {

std::string signWord(AdjustmentCategoryBehavior behavior) {
  return behavior == AdjustmentCategoryBehavior::credit ? "adds time: give a positive amount"
                                                       : "takes time: give a negative amount, e.g. -30";
}

/// Newest first: the booking made last (createdAt), then the later date,
/// then the greater identifier.
bool madeLater(const BalanceAdjustment& a, const BalanceAdjustment& b) {
  using RecordLookup::recency;
  if (recency(a.createdAt()) != recency(b.createdAt())) return recency(a.createdAt()) > recency(b.createdAt());
  if (recency(a.date()) != recency(b.date())) return recency(a.date()) > recency(b.date());
  return a.id() > b.id();
}

/// The instant a booking typed for `day` is dated at: now on today, else
/// the day's noon; now when no day is typed.
Date dateFor(const std::string& day, StoreSession& session) {
  const Date selected =
      day.empty() ? session.now()
                  : DateInput::midday(TypedValue::day(day, session.today(), "day"), session.calendar());
  return TimeBankTransactionController::submissionDate(selected, session.now(), session.calendar());
}

/// Refuses an amount no booking in the category may hold. The store keeps a
/// category's amounts on its side of zero; an amount on the other side would
/// be cut to nothing, so it is refused rather than stored. Zero and more
/// than a day are the transaction's own refusals.
void checkAmount(std::int64_t minutes, const std::string& rawValue, const AdjustmentCategoryOption& option) {
  if (minutes != 0 && std::abs(minutes) <= TimeBankTransactionController::maximumAbsoluteMinutes &&
      AdjustmentCategoryValidation::normalizedMinutes(minutes, rawValue) != minutes) {
    throw Refusal("\"" + option.title + "\" " + signWord(option.behavior) + ".", "amount");
  }
  TimeBankTransactionController::checkAmount(minutes);
}

/// Every copy of the booking named by identifier, prefix, "@N" or "last".
std::vector<std::shared_ptr<BalanceAdjustment>> named(StoreSession& session, std::string_view identifier) {
  auto bookings = session.context().fetch<BalanceAdjustment>();
  // The ledger's start marker is not a booking the person made or sees
  // listed, so it takes no place among the newest.
  if (RecordLookup::recentPlace(identifier)) {
    std::erase_if(bookings, [](const auto& booking) { return ManualLedgerMigration::isCarryover(*booking); });
  }
  return RecordLookup::find(bookings, identifier, "booking", madeLater);
}

/// How undo names an action on the booking: by the identifier as typed, or
/// by the booking's short one when typed by place.
std::string actionName(std::string_view verb, std::string_view identifier, const BalanceAdjustment& booking) {
  return std::string(verb) + " " +
         (RecordLookup::recentPlace(identifier) ? Display::shortIdentifier(booking.id()) : std::string(identifier));
}

Values valuesOf(const BalanceAdjustment& booking) {
  return {booking.minutes(), booking.kindRawValue(), booking.category().title, booking.note(), booking.date()};
}

}  // namespace

std::string category(std::string_view typed, const TimeBankSettings& settings) {
  if (typed.empty()) return std::string(BalanceAdjustmentKind(BalanceAdjustmentKind::manual).rawValue());
  const std::string wanted = Text::lowercased(typed);
  std::string choices;
  for (const BalanceAdjustmentKind kind : BalanceAdjustmentKind::allCases()) {
    if (Text::lowercased(kind.rawValue()) == wanted || Text::lowercased(kind.title()) == wanted) {
      return std::string(kind.rawValue());
    }
    choices += choices.empty() ? "" : ", ";
    choices += kind.rawValue();
  }
  for (const auto& own :
       CustomAdjustmentCategoryConfiguration::categories(settings.customAdjustmentCategoriesRawValue())) {
    if (Text::lowercased(own.title()) == wanted) return own.rawValue();
    choices += ", \"" + own.title() + "\"";
  }
  throw InvalidInput("category", "'" + std::string(typed) +
                                     "' is neither a kind nor one of your categories (choose from " + choices + ")");
}

Booked add(StoreSession& session, const Request& request) {
  session.journal("book " + (request.amountText.empty() ? std::to_string(request.minutes) : request.amountText));
  const std::string& note = TypedValue::text(request.note, "note");
  const std::string rawValue = category(request.category, session.settings());
  const Date date = dateFor(request.day, session);
  const auto option = *AdjustmentCategoryOption::resolve(rawValue);
  checkAmount(request.minutes, rawValue, option);

  auto booking = TimeBankTransactionController::record(request.minutes, date, note, rawValue, session.context());
  const double balance =
      LedgerTotal::balanceThrough(session.context(), session.settings().startingBalanceMinutes(), session.now());
  return {std::move(booking), option.title, balance};
}

Listing list(StoreSession& session, const DateInterval& interval) {
  Listing result;
  // Every booking dated before the first instant, that is at or before the
  // instant just ahead of it.
  const Date lastBefore(std::nextafter(interval.start.timeIntervalSinceReferenceDate, -HUGE_VAL));
  result.beforeSeconds =
      LedgerTotal::balanceThrough(session.context(), session.settings().startingBalanceMinutes(), lastBefore);
  // The listed ones whole, and only those.
  using Op = RowFilter::Op;
  const RowFilter inside =
      RowFilter::allOf({{"date", Op::greaterOrEqual, interval.start}, {"date", Op::less, interval.end()}});
  for (auto& booking : session.context().fetch<BalanceAdjustment>(
           inside, {{}, {{&BalanceAdjustment::date}, {&BalanceAdjustment::id}}})) {
    if (ManualLedgerMigration::isCarryover(*booking)) continue;
    result.totalSeconds += static_cast<double>(booking->minutes()) * 60.0;
    result.bookings.push_back(std::move(booking));
  }
  return result;
}

std::shared_ptr<BalanceAdjustment> remove(StoreSession& session, std::string_view identifier) {
  const auto found = named(session, identifier);
  const auto& booking = found.front();
  session.journal(actionName("bookings delete", identifier, *booking));
  if (ManualLedgerMigration::isCarryover(*booking)) {
    throw Refusal("This booking marks the switch to the manual ledger and stays.");
  }
  for (const auto& copy : found) session.context().deleteRecord(copy);
  session.context().save();
  return booking;
}

Edited edit(StoreSession& session, std::string_view identifier, const Change& change) {
  if (change.empty()) throw InvalidInput("", "nothing to change: give an amount, a category, a note or a day");
  const auto found = named(session, identifier);
  const auto& booking = found.front();
  session.journal(actionName("bookings edit", identifier, *booking));
  if (ManualLedgerMigration::isCarryover(*booking)) {
    throw Refusal("This booking marks the switch to the manual ledger and cannot be changed.");
  }

  Edited result{booking, valuesOf(*booking), {}, 0};
  Values after = result.before;
  if (change.amount) after.minutes = TypedValue::minutes(*change.amount, "amount");
  if (change.category) after.category = category(*change.category, session.settings());
  if (change.note) after.note = NoteValidation::normalized(TypedValue::text(*change.note, "note"));
  if (change.day) after.date = dateFor(*change.day, session);
  // A category no longer known (a removed own category) counts as manual, as it is shown.
  const auto option = AdjustmentCategoryOption::resolve(after.category).value_or(booking->category());
  after.categoryTitle = option.title;
  checkAmount(after.minutes, after.category, option);

  // Every copy of the identifier becomes the same booking; when it was made stays.
  const Date modified = Date::now();
  for (const auto& copy : found) {
    copy->setMinutes(after.minutes);
    if (change.category) copy->setKindRawValue(AdjustmentCategoryValidation::normalizedRawValue(after.category));
    copy->setNote(after.note);
    copy->setDate(after.date);
    copy->setModifiedAt(modified);
  }
  session.context().save();
  result.after = std::move(after);
  result.balanceSeconds =
      LedgerTotal::balanceThrough(session.context(), session.settings().startingBalanceMinutes(), session.now());
  return result;
}

}  // namespace quillmont::Bookings
