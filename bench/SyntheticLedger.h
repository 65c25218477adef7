// SyntheticLedger: a deterministic ledger of a given size for benchmarks:
// work entries on weekdays (some overlapping, some repeated), adjustments
// of every kind, schedules spread over the years, one set-up settings
// record; inserted into a context and saved.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

#include "core/ledger/BalanceAdjustment.h"
#include "core/ledger/TimeBankSettings.h"
#include "core/ledger/WorkEntry.h"
#include "core/ledger/WorkSchedule.h"
#include "platform/store/ModelContext.h"

namespace quillmont::bench {

struct LedgerSize {
  std::size_t entries;
  std::size_t adjustments;
  std::size_t schedules;
  double years;
};

/// Fills `context` with a ledger ending at `end` and saves it.
inline void fillLedger(ModelContext& context, const LedgerSize& size, Date end) {
  std::mt19937_64 random(42);
  static const char* const notes[] = {"", "", "", "Team sync ran long", "Release night", "Caf\u00e9 r\u00e9union",
                                      "Dentist", "Pair session \U0001F469\u200D\U0001F4BB"};
  static const char* const kinds[] = {"manual", "appointment", "personalErrands", "longLunch", "other",
                                      "holiday", "paidLeave", "sickLeave", "custom:R3lt"};
  const double span = size.years * 365.25 * 86400.0;
  const Date start = end - span;
  for (std::size_t i = 0; i < size.entries; ++i) {
    const Date day = start + static_cast<double>(i) * span / static_cast<double>(size.entries);
    const Date begin = day + static_cast<double>(random() % 7200);
    const double length = 6 * 3600.0 + static_cast<double>(random() % 10800);
    const auto note = notes[random() % 8];
    context.insert(std::make_shared<WorkEntry>(UUID::random(), begin, begin + length,
                                               static_cast<std::int64_t>(random() % 60), note, begin, begin + length));
  }
  for (std::size_t i = 0; i < size.adjustments; ++i) {
    const Date date = start + static_cast<double>(random() % static_cast<std::uint64_t>(span));
    auto adjustment = std::make_shared<BalanceAdjustment>(UUID::random(), date, 0, notes[random() % 8],
                                                          BalanceAdjustmentKind::manual, date, date);
    const std::string kind = kinds[random() % 9];
    const bool credit = kind == "holiday" || kind == "paidLeave" || kind == "sickLeave";
    const std::int64_t minutes = 5 + static_cast<std::int64_t>(random() % 480);
    adjustment->setKindRawValue(kind);
    adjustment->setMinutes(kind == "manual" ? minutes - 240 : (credit ? minutes : -minutes));
    context.insert(adjustment);
  }
  for (std::size_t i = 0; i < size.schedules; ++i) {
    const Date from = start + static_cast<double>(i) * span / static_cast<double>(size.schedules);
    const std::int64_t daily = 240 + static_cast<std::int64_t>(random() % 300);
    const std::int64_t minutes[] = {daily, daily, daily, daily, daily - 60, 0, 0};
    context.insert(std::make_shared<WorkSchedule>(UUID::random(), from, minutes, from, from));
  }
  const std::int64_t weekdays[] = {480, 480, 480, 480, 480, 0, 0};
  context.insert(std::make_shared<TimeBankSettings>(UUID::random(), start, 0, weekdays, std::span<const std::int64_t>{},
                                                    "appointment,other", "[\"Gym\"]", true, start));
  context.save();
}

/// A temporary QUILLMONT_HOME for one benchmark program, removed at exit.
class TemporaryHome {
 public:
  TemporaryHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
    ::setenv("QUILLMONT_HOME", path_.c_str(), 1);
  }
  ~TemporaryHome() { std::filesystem::remove_all(path_); }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

 private:
  std::filesystem::path path_;
};

}  // namespace quillmont::bench
