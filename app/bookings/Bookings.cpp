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
  const Date selected = request.day.empty()
                            ? session.now()
                            : DateInput::midday(TypedValue::day(request.day, session.today(), "day"), session.calendar());
  const Date date = TimeBankTransactionController::submissionDate(selected, session.now(), session.calendar());

  // The store keeps a category's amounts on its side of zero; an amount on
  // the other side would be cut to nothing, so it is refused here.
  const auto option = *AdjustmentCategoryOption::resolve(rawValue);
  const std::int64_t minutes = request.minutes;
  if (minutes != 0 && std::abs(minutes) <= TimeBankTransactionController::maximumAbsoluteMinutes &&
      AdjustmentCategoryValidation::normalizedMinutes(minutes, rawValue) != minutes) {
    throw Refusal("\"" + option.title + "\" " + signWord(option.behavior) + ".", "amount");
  }

  auto booking = TimeBankTransactionController::record(minutes, date, note, rawValue, session.context());
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
  auto bookings = session.context().fetch<BalanceAdjustment>();
  // The ledger's start marker is not a booking the person made or sees
  // listed, so it takes no place among the newest.
  if (RecordLookup::recentPlace(identifier)) {
    std::erase_if(bookings, [](const auto& booking) { return ManualLedgerMigration::isCarryover(*booking); });
  }
  const auto found = RecordLookup::find(bookings, identifier, "booking", madeLater);
  const auto& booking = found.front();
  session.journal("bookings delete " + (RecordLookup::recentPlace(identifier) ? Display::shortIdentifier(booking->id())
                                                                              : std::string(identifier)));
  if (ManualLedgerMigration::isCarryover(*booking)) {
    throw Refusal("This booking marks the switch to the manual ledger and stays.");
  }
  for (const auto& copy : found) session.context().deleteRecord(copy);
  session.context().save();
  return booking;
}

}  // namespace quillmont::Bookings
