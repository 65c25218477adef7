// Record store: loading a table into a fresh context, and saving inserts,
// for a record of seven attributes shaped like a work entry.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/store/ModelContainer.h"
#include "platform/store/ModelContext.h"

namespace quillmont {
namespace {

class Entry final : public PersistentModel {
 public:
  static constexpr std::string_view entityName = "Entry";
  static std::span<const Attribute<Entry>> attributes() {
    static const std::array<Attribute<Entry>, 7> list{{
        {"id", &Entry::id_},
        {"startedAt", &Entry::startedAt_},
        {"endedAt", &Entry::endedAt_},
        {"breakMinutes", &Entry::breakMinutes_},
        {"note", &Entry::note_},
        {"createdAt", &Entry::createdAt_},
        {"modifiedAt", &Entry::modifiedAt_},
    }};
    return list;
  }
  explicit Entry(ForLoading) {}
  explicit Entry(int index)
      : id_(UUID::random()),
        startedAt_(Date(7.5e8 + index * 86'400.0)),
        endedAt_(startedAt_ + 8.5 * 3600),
        breakMinutes_(30),
        note_(index % 3 == 0 ? "Release review with the platform team" : ""),
        createdAt_(startedAt_),
        modifiedAt_(startedAt_) {}

 private:
  UUID id_;
  Date startedAt_;
  std::optional<Date> endedAt_;
  std::int64_t breakMinutes_ = 0;
  std::string note_;
  Date createdAt_;
  Date modifiedAt_;
};

/// A store of its own under a temporary QUILLMONT_HOME, removed afterwards.
class TemporaryStore {
 public:
  TemporaryStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    home_ = pattern;
    setenv("QUILLMONT_HOME", home_.c_str(), 1);
  }
  ~TemporaryStore() { std::filesystem::remove_all(home_); }
  TemporaryStore(const TemporaryStore&) = delete;
  TemporaryStore& operator=(const TemporaryStore&) = delete;

  static std::shared_ptr<ModelContainer> open() {
    return ModelContainer::open(ModelConfiguration{"bench", Schema::of<Entry>("1"), false, true, "group.bench", {}});
  }
  void remove() const { std::filesystem::remove_all(home_ / "group.bench"); }

 private:
  std::filesystem::path home_;
};

void BM_LoadIntoFreshContext(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TemporaryStore store;
  const auto container = TemporaryStore::open();
  {
    ModelContext context(container);
    for (int i = 0; i < count; ++i) context.insert(std::make_shared<Entry>(i));
    context.save();
  }
  for (auto _ : state) {
    ModelContext context(container);
    auto entries = context.fetch<Entry>();
    benchmark::DoNotOptimize(entries.data());
    if (entries.size() != static_cast<std::size_t>(count)) state.SkipWithError("wrong count");
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_LoadIntoFreshContext)->Arg(30'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void BM_FetchFromLoadedContext(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TemporaryStore store;
  ModelContext context(TemporaryStore::open());
  for (int i = 0; i < count; ++i) context.insert(std::make_shared<Entry>(i));
  context.save();
  context.fetch<Entry>();
  for (auto _ : state) {
    auto entries = context.fetch<Entry>();
    benchmark::DoNotOptimize(entries.data());
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_FetchFromLoadedContext)->Arg(100'000)->Unit(benchmark::kMillisecond);

// Inserting into the context and saving, in one transaction; each round
// starts from an empty store. Building the records is not timed.
void BM_SaveInserts(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TemporaryStore store;
  std::vector<std::shared_ptr<Entry>> entries;
  for (auto _ : state) {
    state.PauseTiming();
    store.remove();
    entries.clear();
    for (int i = 0; i < count; ++i) entries.push_back(std::make_shared<Entry>(i));
    const auto container = TemporaryStore::open();
    state.ResumeTiming();
    ModelContext context(container);
    for (const auto& entry : entries) context.insert(entry);
    context.save();
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_SaveInserts)->Arg(100'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace quillmont

BENCHMARK_MAIN();
