// The archive at its largest: 100,000 work entries, 100,000 adjustments,
// 10,000 schedules and 100 settings records, with typical notes and
// timestamps carrying fractions of a second as the clock writes them. The
// archive is the same on every run.
//
// BM_DecodeAndValidate and BM_Encode report the document's bytes per second.
// BM_DecodeAgainstBareParse reports decoding as a multiple of simdjson's
// own parse of the same document in the same run (ratioToBareParse).
// The merges run on a SQLite store file under a temporary QUILLMONT_HOME and
// include the save.
//
// `bench_archive --write-document FILE` writes the document to FILE, for
// timing the command line's import of it as a whole process
// (bench/archive-import.sh).
//
// BM_PeakMemoryOfDecodeAndMerge runs this program again as a fresh process
// (`bench_archive --decode-and-merge FILE`) that reads the document into
// memory, notes its peak resident size (getrusage ru_maxrss), decodes the
// text handed over as the import does (its pages given back as they are
// read) and merges into an empty store file, and notes the peak again; the
// counters are the growth of the peak over the document's size.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "core/archive/TimeBankArchive.h"
#include "core/persistence/QuillmontPersistence.h"
#include "platform/store/ModelContext.h"

#include <simdjson.h>

namespace {

using quillmont::Date;
using quillmont::ModelContainer;
using quillmont::ModelContext;
using quillmont::TimeBankArchive;
using quillmont::UUID;

std::vector<std::string> typicalNotes() {
  return {"",
          "",
          "",
          "Doctor appointment",
          "Team sync ran long",
          "Dentist",
          "Left early for school pickup",
          "Release night",
          "Train delayed",
          "Worked from home",
          "Customer workshop prep / follow-up",
          "Quarterly planning",
          "Overtime for the migration of the billing service to the new cluster",
          "Caf\u00E9 r\u00E9union",
          "\u00DCberstunden abbauen",
          "Arzttermin f\u00FCr J\u00F6rg",
          "Birthday \U0001F382",
          "Family day \U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466",
          "Line 1\nLine 2 \"quoted\"",
          "Sprint review and retro"};
}

TimeBankArchive maximalArchive() {
  std::mt19937_64 random(20240610);
  const std::vector<std::string> notes = typicalNotes();
  const auto note = [&]() -> const std::string& { return notes[random() % notes.size()]; };
  const auto id = [&] {
    UUID result;
    for (std::size_t i = 0; i < 16; i += 8) {
      const std::uint64_t bits = random();
      for (std::size_t j = 0; j < 8; ++j) result.bytes[i + j] = static_cast<std::uint8_t>(bits >> (8 * j));
    }
    result.bytes[6] = static_cast<std::uint8_t>((result.bytes[6] & 0x0F) | 0x40);
    result.bytes[8] = static_cast<std::uint8_t>((result.bytes[8] & 0x3F) | 0x80);
    return result;
  };
  // A clock reading: whole seconds plus a fraction in microseconds.
  const auto clock = [&](double seconds) { return Date(seconds + static_cast<double>(random() % 1000000) / 1e6); };
  const double start = 600000000;  // 2020
  const double day = 86400;

  TimeBankArchive archive;
  archive.exportedAt = clock(start + 1500 * day);
  archive.workEntries.reserve(TimeBankArchive::maximumWorkEntryCount);
  for (std::size_t i = 0; i < TimeBankArchive::maximumWorkEntryCount; ++i) {
    const Date started = clock(start + static_cast<double>(i) * 1200);
    TimeBankArchive::WorkEntryRecord& entry = archive.workEntries.emplace_back();
    entry.id = id();
    entry.startedAt = started;
    if (i + 1 < TimeBankArchive::maximumWorkEntryCount) entry.endedAt = clock(started.timeIntervalSinceReferenceDate + 3600);
    entry.breakMinutes = static_cast<std::int64_t>(random() % 4) * 15;
    entry.note = note();
    entry.createdAt = started;
    entry.modifiedAt = clock(started.timeIntervalSinceReferenceDate + 4000);
  }
  const std::vector<std::string> kinds = {"manual", "appointment", "personalErrands", "longLunch",
                                          "other",  "holiday",     "paidLeave",       "custom:S2l0YSAvIFNjaHVsZQ=="};
  archive.balanceAdjustments.reserve(TimeBankArchive::maximumBalanceAdjustmentCount);
  for (std::size_t i = 0; i < TimeBankArchive::maximumBalanceAdjustmentCount; ++i) {
    TimeBankArchive::BalanceAdjustmentRecord& adjustment = archive.balanceAdjustments.emplace_back();
    adjustment.id = id();
    adjustment.date = clock(start + static_cast<double>(i) * 1000);
    adjustment.minutes = static_cast<std::int64_t>(random() % 481) - 240;
    adjustment.note = note();
    adjustment.kind = kinds[random() % kinds.size()];
    adjustment.createdAt = adjustment.date;
    adjustment.modifiedAt = clock(adjustment.date.timeIntervalSinceReferenceDate + 60);
  }
  archive.schedules.reserve(TimeBankArchive::maximumScheduleCount);
  for (std::size_t i = 0; i < TimeBankArchive::maximumScheduleCount; ++i) {
    TimeBankArchive::ScheduleRecord& schedule = archive.schedules.emplace_back();
    schedule.id = id();
    schedule.effectiveFrom = Date(start + static_cast<double>(i) * day);
    schedule.weekdayMinutes = {480, 480, 480, 480, static_cast<std::int64_t>(random() % 481), 0, 0};
    schedule.createdAt = clock(schedule.effectiveFrom.timeIntervalSinceReferenceDate);
    schedule.modifiedAt = schedule.createdAt;
  }
  for (std::size_t i = 0; i < TimeBankArchive::maximumSettingsCount; ++i) {
    TimeBankArchive::SettingsRecord& settings = archive.settings.emplace_back();
    settings.id = id();
    settings.calculationStartDate = Date(start);
    settings.startingBalanceMinutes = static_cast<std::int64_t>(random() % 1000);
    settings.weekdayMinutes = {480, 480, 480, 480, 300, 0, 0};
    settings.quickActionMinutes = std::vector<std::int64_t>{15, 30, 60, 120};
    settings.visibleAdjustmentKindsRawValue = "appointment,personalErrands,longLunch,other";
    settings.customAdjustmentCategoriesRawValue = R"(["Kita \/ Schule","Ehrenamt"])";
    settings.hasCompletedOnboarding = true;
    settings.modifiedAt = clock(start + 1400 * day);
  }
  return archive;
}

// The document as a file reader leaves it, in a string.
const std::string& maximalDocument() {
  static const std::string json = maximalArchive().encodedJSON();
  return json;
}

void BM_DecodeAndValidate(benchmark::State& state) {
  const std::string& json = maximalDocument();
  for (auto _ : state) {
    TimeBankArchive archive = TimeBankArchive::decodeJSON(json);
    benchmark::DoNotOptimize(archive);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * json.size()));
  state.counters["documentMiB"] = static_cast<double>(json.size()) / (1024 * 1024);
}
BENCHMARK(BM_DecodeAndValidate)->Unit(benchmark::kMillisecond);

// Decoding against simdjson's bare parse of the same document: its DOM
// parser checks every byte and builds its tape, converting no value into a
// record. Both run in every iteration, one after the other, so a machine
// that speeds up or slows down moves both alike, and both are timed by the
// thread's CPU clock, so other programs on a busy machine do not count; the
// time shown is the decode's, and ratioToBareParse is the decodes' total
// over the parses'.
struct ThreadClock {
  using duration = std::chrono::nanoseconds;
  using time_point = std::chrono::time_point<ThreadClock>;
  static time_point now() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return time_point(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
  }
};

void BM_DecodeAgainstBareParse(benchmark::State& state) {
  using Clock = ThreadClock;
  const std::string& json = maximalDocument();
  simdjson::dom::parser parser;
  std::chrono::duration<double> parsing{0};
  std::chrono::duration<double> decoding{0};
  for (auto _ : state) {
    const auto start = Clock::now();
    simdjson::dom::element root;
    if (parser.parse(json.data(), json.size(), false).get(root) != simdjson::SUCCESS) {
      state.SkipWithError("simdjson refused the document");
      break;
    }
    benchmark::DoNotOptimize(root);
    const auto parsed = Clock::now();
    TimeBankArchive archive = TimeBankArchive::decodeJSON(json);
    benchmark::DoNotOptimize(archive);
    const auto decoded = Clock::now();
    parsing += parsed - start;
    decoding += decoded - parsed;
    state.SetIterationTime(std::chrono::duration<double>(decoded - parsed).count());
  }
  if (parsing.count() > 0) {
    state.counters["bareParseMs"] = parsing.count() * 1000 / static_cast<double>(state.iterations());
    state.counters["ratioToBareParse"] = decoding / parsing;
  }
}
BENCHMARK(BM_DecodeAgainstBareParse)->Unit(benchmark::kMillisecond)->UseManualTime();

// The same from a view of the text.
void BM_DecodeAndValidateFromView(benchmark::State& state) {
  const std::string_view json = maximalDocument();
  for (auto _ : state) {
    TimeBankArchive archive = TimeBankArchive::decodeJSON(json);
    benchmark::DoNotOptimize(archive);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * json.size()));
}
BENCHMARK(BM_DecodeAndValidateFromView)->Unit(benchmark::kMillisecond);

void BM_Encode(benchmark::State& state) {
  const TimeBankArchive archive = TimeBankArchive::decodeJSON(maximalDocument());
  std::size_t size = 0;
  for (auto _ : state) {
    std::string json = archive.encodedJSON();
    size = json.size();
    benchmark::DoNotOptimize(json);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
BENCHMARK(BM_Encode)->Unit(benchmark::kMillisecond);

// Stores live under a temporary QUILLMONT_HOME, removed at the end.
class TemporaryHome {
 public:
  TemporaryHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-archive-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
    setenv("QUILLMONT_HOME", path_.c_str(), 1);
  }
  ~TemporaryHome() { std::filesystem::remove_all(path_); }
  TemporaryHome(const TemporaryHome&) = delete;
  TemporaryHome& operator=(const TemporaryHome&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// Removes every store, so that the next open starts empty.
  void clear() const {
    for (const auto& item : std::filesystem::directory_iterator(path_)) std::filesystem::remove_all(item.path());
  }

 private:
  std::filesystem::path path_;
};

std::shared_ptr<ModelContainer> openStore() {
  return quillmont::QuillmontPersistence::makeContainer(/*inMemory=*/false, /*cloudSync=*/false, /*useAppGroup=*/true);
}

Date mergeInstant(const TimeBankArchive& archive) { return archive.exportedAt + 3600; }

void BM_MergeIntoEmptyStore(benchmark::State& state) {
  const TimeBankArchive archive = TimeBankArchive::decodeJSON(maximalDocument());
  const TemporaryHome home;
  for (auto _ : state) {
    state.PauseTiming();
    home.clear();
    auto context = std::make_unique<ModelContext>(openStore());
    state.ResumeTiming();
    const auto result = archive.merge(*context, mergeInstant(archive));
    benchmark::DoNotOptimize(result);
    state.PauseTiming();
    context.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_MergeIntoEmptyStore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The second import of the same archive, in a new process's context: the
// store is loaded from its file, every record is matched and found as new
// or newer, and the context is saved.
void BM_MergeSameArchiveAgain(benchmark::State& state) {
  const TimeBankArchive archive = TimeBankArchive::decodeJSON(maximalDocument());
  const TemporaryHome home;
  std::int64_t unchanged = 0;
  for (auto _ : state) {
    state.PauseTiming();
    home.clear();
    {
      ModelContext first(openStore());
      archive.merge(first, mergeInstant(archive));
    }
    auto context = std::make_unique<ModelContext>(openStore());
    state.ResumeTiming();
    unchanged = archive.merge(*context, mergeInstant(archive)).unchanged;
    state.PauseTiming();
    context.reset();
    state.ResumeTiming();
  }
  state.counters["unchanged"] = static_cast<double>(unchanged);
}
BENCHMARK(BM_MergeSameArchiveAgain)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

long peakResidentKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// The measuring process: prints the peak resident size in kilobytes after
// reading the document, after decoding it and after merging it.
int decodeAndMerge(const char* documentPath) {
  std::ifstream file(documentPath, std::ios::binary);
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(documentPath));
  std::string json;
  json.resize(size);
  file.read(json.data(), static_cast<std::streamsize>(size));
  const TemporaryHome home;
  const long afterReading = peakResidentKilobytes();
  const TimeBankArchive archive = TimeBankArchive::decodeJSON(std::move(json));  // as the import does
  const long afterDecoding = peakResidentKilobytes();
  ModelContext context(openStore());
  archive.merge(context, mergeInstant(archive));
  const long afterMerging = peakResidentKilobytes();
  std::printf("%ld %ld %ld\n", afterReading, afterDecoding, afterMerging);
  return 0;
}

void BM_PeakMemoryOfDecodeAndMerge(benchmark::State& state) {
  const TemporaryHome home;
  const std::filesystem::path document = home.path() / "archive.json";
  std::ofstream(document, std::ios::binary) << maximalDocument();
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  long afterReading = 0;
  long afterDecoding = 0;
  long afterMerging = 0;
  for (auto _ : state) {
    FILE* output = popen(("'" + program + "' --decode-and-merge '" + document.string() + "'").c_str(), "r");
    if (!output || std::fscanf(output, "%ld %ld %ld", &afterReading, &afterDecoding, &afterMerging) != 3) {
      state.SkipWithError("the measuring process failed");
    }
    if (output) pclose(output);
  }
  const double documentKilobytes = static_cast<double>(maximalDocument().size()) / 1024;
  state.counters["documentMiB"] = documentKilobytes / 1024;
  state.counters["decodePeakGrowthMiB"] = static_cast<double>(afterDecoding - afterReading) / 1024;
  state.counters["decodeAndMergePeakGrowthMiB"] = static_cast<double>(afterMerging - afterReading) / 1024;
  state.counters["growthPerDocumentByte"] = static_cast<double>(afterMerging - afterReading) / documentKilobytes;
}
BENCHMARK(BM_PeakMemoryOfDecodeAndMerge)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--decode-and-merge") return decodeAndMerge(argv[2]);
  if (argc == 3 && std::string_view(argv[1]) == "--write-document") {
    std::ofstream file(argv[2], std::ios::binary);
    file << maximalDocument();
    file.close();
    return file ? 0 : 1;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
