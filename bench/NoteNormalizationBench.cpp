// Normalises 200,000 typical entry notes per iteration with
// NoteValidation::normalized: mostly short ASCII, some with blanks around,
// about 10% with accents, 5% with emoji (ZWJ sequences, flags, skin tones)
// and a few longer than the 280-character limit. The notes are the same on
// every run.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "core/ledger/NoteValidation.h"

namespace {

constexpr std::size_t noteCount = 200'000;

std::vector<std::string> typicalNotes() {
  const std::vector<std::string> plain = {
      "Doctor appointment", "Team sync ran long", "Dentist", "Left early for school pickup",
      "Release night", "Train delayed", "Worked from home", "Customer workshop prep",
      "Quarterly planning", "Overtime for the migration", "Short day", "Sprint review and retro"};
  const std::vector<std::string> accented = {
      "Caf\u00E9 r\u00E9union", "\u00DCberstunden abbauen", "R\u00E9union d'\u00E9quipe",
      "Arzttermin f\u00FCr J\u00F6rg", "Se\u00F1or Mu\u00F1oz visit", "Na\u00EFve estimate, cr\u00E8me br\u00FBl\u00E9e"};
  const std::vector<std::string> emoji = {
      "Birthday \U0001F382", "Family day \U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466",
      "Trip \U0001F1E9\U0001F1EA \u2192 \U0001F1EB\U0001F1F7", "\U0001F44D\U0001F3FD deployed",
      "Sick \U0001F912", "Pair session \U0001F469\u200D\U0001F4BB\U0001F468\u200D\U0001F4BB"};
  const std::vector<std::string> blanks = {" ", "  ", "\t", "\n", " \r\n", "\u00A0"};

  std::mt19937_64 random(20240601);
  const auto pick = [&](const std::vector<std::string>& from) -> const std::string& { return from[random() % from.size()]; };

  std::vector<std::string> notes;
  notes.reserve(noteCount);
  for (std::size_t i = 0; i < noteCount; ++i) {
    const std::uint64_t kind = random() % 1000;
    std::string note;
    if (kind < 5) {  // longer than the limit, one in three of them non-ASCII
      const std::string& sentence = kind < 3 ? pick(plain) : kind == 3 ? pick(accented) : pick(emoji);
      while (note.size() < 400) note += sentence + ". ";
    } else if (kind < 105) {
      note = pick(accented);
    } else if (kind < 155) {
      note = pick(emoji);
    } else {
      note = pick(plain);
      if (random() % 4 == 0) note.append(" ").append(std::to_string(random() % 100));
    }
    if (random() % 5 == 0) note = pick(blanks) + note;
    if (random() % 5 == 0) note += pick(blanks);
    notes.push_back(std::move(note));
  }
  return notes;
}

void BM_NormalizeTypicalNotes(benchmark::State& state) {
  const std::vector<std::string> notes = typicalNotes();
  for (auto _ : state) {
    for (const std::string& note : notes) {
      std::string normalized = quillmont::NoteValidation::normalized(note);
      benchmark::DoNotOptimize(normalized);
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * notes.size()));
}
BENCHMARK(BM_NormalizeTypicalNotes)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
