#include "core/engine/LedgerTotal.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "core/engine/TimeBankCalculator.h"
#include "core/ledger/BalanceAdjustment.h"
#include "platform/store/ModelContainer.h"
#include "platform/store/ModelContext.h"
#include "platform/store/RowFilter.h"
#include "platform/store/StoreError.h"

namespace quillmont::LedgerTotal {
namespace {

constexpr std::string_view key = "ledger.BalanceAdjustmentTotal";

// The recorded total: the bookings' generation, the instant, and the
// seconds of every booking dated at or before it; as text
// "generation instant seconds".
struct Recorded {
  std::int64_t generation = 0;
  Date at;
  TimeInterval seconds = 0;

  static std::optional<Recorded> read(ModelContainer& container) {
    const auto text = container.metadata(key);
    if (!text) return std::nullopt;
    Recorded recorded;
    double at = 0;
    const char* position = text->data();
    const char* const end = position + text->size();
    const auto field = [&](auto& value) {
      const auto [after, error] = std::from_chars(position, end, value);
      if (error != std::errc{} || (after != end && *after != ' ')) return false;
      position = after == end ? end : after + 1;
      return true;
    };
    if (!field(recorded.generation) || !field(at) || !field(recorded.seconds) || position != end) return std::nullopt;
    recorded.at = Date(at);
    return recorded;
  }

  void write(ModelContainer& container) const {
    char buffer[96];
    char* out = buffer;
    const auto append = [&](auto value) { out = std::to_chars(out, buffer + sizeof buffer, value).ptr; };
    append(generation);
    *out++ = ' ';
    append(at.timeIntervalSinceReferenceDate);
    *out++ = ' ';
    append(seconds);
    container.setMetadata(key, std::string_view(buffer, static_cast<std::size_t>(out - buffer)));
  }
};

// Records a total for later reads; they sum more rows when it cannot be.
void record(ModelContainer& container, const Recorded& total) {
  if (container.isReadOnly() || !std::isfinite(total.at.timeIntervalSinceReferenceDate)) return;
  try {
    total.write(container);
  } catch (const StoreError&) {
  }
}

// How many bookings dated after the recorded instant and due by now a read
// adds before it records a total as of now.
constexpr std::size_t refreshAfter = 64;

}  // namespace

TimeInterval bookedThrough(ModelContext& context, Date through) {
  ModelContainer& container = *context.container();
  // Unsaved bookings are not in any recorded total.
  const bool asStored = !context.hasChanges<BalanceAdjustment>();
  // Read before the rows: a write in between makes the recorded total stale, never wrong.
  const std::int64_t generation = asStored ? context.generation<BalanceAdjustment>() : 0;
  const auto recorded = asStored ? Recorded::read(container) : std::nullopt;
  using Op = RowFilter::Op;
  const auto seconds = [](const BalanceAdjustment& booking, Date at) {
    return TimeBankCalculator::ledgerSecondsOf(booking.date(), booking.minutes(), at);
  };

  if (recorded && recorded->generation == generation && recorded->at <= through) {
    // The total plus what fell due since its instant (bookings ahead of
    // `through` are read and left out).
    TimeInterval total = recorded->seconds;
    std::size_t due = 0;
    context.forEach<BalanceAdjustment>({"date", "minutes"}, RowFilter::allOf({{"date", Op::greater, recorded->at}}),
                                       [&](const BalanceAdjustment& booking) {
                                         due += booking.date() <= through;
                                         total += seconds(booking, through);
                                       });
    // Saves carry the total but not its instant, so bookings made since
    // pile up behind it; now and then the total moves up to `through`.
    if (due > refreshAfter) record(container, {generation, through, total});
    return total;
  }
  if (recorded && recorded->generation == generation && through < recorded->at) {
    // An earlier instant: the total less what fell due after `through`.
    TimeInterval total = recorded->seconds;
    context.forEach<BalanceAdjustment>(
        {"date", "minutes"},
        RowFilter::allOf({{"date", Op::greater, through}, {"date", Op::lessOrEqual, recorded->at}}),
        [&](const BalanceAdjustment& booking) { total -= seconds(booking, recorded->at); });
    return total;
  }
  TimeInterval total = 0;
  context.forEach<BalanceAdjustment>({"date", "minutes"},
                                     [&](const BalanceAdjustment& booking) { total += seconds(booking, through); });
  if (asStored) record(container, {generation, through, total});
  return total;
}

TimeInterval balanceThrough(ModelContext& context, std::int64_t startingBalanceMinutes, Date through) {
  return TimeBankCalculator::ledgerBalanceSeconds({}, startingBalanceMinutes, through) +
         bookedThrough(context, through);
}

void keepCurrent(ModelContext& context) {
  ModelContainer* container = context.container().get();  // outlives the context's observers
  context.setSaveObserver<BalanceAdjustment>(
      std::string(key), [container](const ModelContext::SavedRecords<BalanceAdjustment>& saved) {
        if (!saved.deleted.empty() || saved.inserted != saved.written.size()) return;
        auto recorded = Recorded::read(*container);
        if (!recorded || recorded->generation != saved.previousGeneration) return;
        for (const BalanceAdjustment* booking : saved.written) {
          recorded->seconds += TimeBankCalculator::ledgerSecondsOf(booking->date(), booking->minutes(), recorded->at);
        }
        recorded->generation = saved.generation;
        recorded->write(*container);
      });
}

}  // namespace quillmont::LedgerTotal
