#include "host/samples/live_writing.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "host/facts/look.h"
#include "host/platform/interruption.h"
#include "host/samples/live_database.h"
#include "host/show/progress.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTick{50};
constexpr double kMostBacklogS = 2;  // of what others kept from being written; the rest is not made up for

/// All databases, and how many rows are due.
class LiveDirectory {
 public:
  LiveDirectory(const CatalogueView& catalogue, const LiveRequest& request) : request_(request) {
    for (const DatabaseView& view : catalogue.databases) {
      databases_.push_back(
          std::make_unique<LiveDatabase>(view, catalogue.Of(view.database), request.directory, request.seed));
    }
  }

  LiveResult Write() {
    while (Seconds() < request_.seconds && InterruptionScope::Signal() == 0 && !AllFailed()) {
      WriteRows(RowsDue());
      Show();
      std::this_thread::sleep_for(kTick);
    }
    EndProgress();
    return Result();
  }

 private:
  using Turns = std::vector<std::pair<LiveDatabase*, LiveTable*>>;

  [[nodiscard]] double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

  [[nodiscard]] bool AllFailed() const {
    return std::all_of(databases_.begin(), databases_.end(), [](const auto& each) { return !each->Problem().empty(); });
  }

  std::int64_t RowsDue() {
    const auto all = static_cast<std::int64_t>(Seconds() * request_.rate);
    const auto most = static_cast<std::int64_t>(kMostBacklogS * request_.rate);
    skipped_ = std::max(skipped_, all - rows_ - most);
    return all - rows_ - skipped_;
  }

  /// Tables take turns.
  void WriteRows(std::int64_t count) {
    Turns turns;
    for (const auto& database : databases_) {
      for (LiveTable* table : database->Tables()) {
        turns.emplace_back(database.get(), table);
      }
    }
    for (const auto& database : databases_) {
      const std::vector<LiveTable*> rows = RowsOf(*database, turns, count);
      if (!rows.empty() && InterruptionScope::Signal() == 0) {
        rows_ += database->Write(rows);
      }
    }
    turn_ += static_cast<std::size_t>(count);
  }

  /// The tables of the database among the next `count` turns, each as often as it has one, those of a table together.
  [[nodiscard]] std::vector<LiveTable*> RowsOf(const LiveDatabase& database, const Turns& turns,
                                               std::int64_t count) const {
    std::vector<LiveTable*> rows;
    for (std::size_t row = 0; !turns.empty() && row < static_cast<std::size_t>(count); ++row) {
      const auto& [owner, table] = turns[(turn_ + row) % turns.size()];
      if (owner == &database) {
        rows.push_back(table);
      }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
  }

  void Show() noexcept {
    constexpr int kTicksAtATime = 5;
    if (!request_.show_progress || ticks_++ % kTicksAtATime != 0) {
      return;
    }
    try {
      ShowProgress({.database = "writing", .step = Counted(rows_, "row"), .share_done = Seconds() / request_.seconds});
    } catch (...) {
      EndProgress();  // Progress is a courtesy: the rows go on without it.
    }
  }

  [[nodiscard]] LiveResult Result() const {
    LiveResult result{.seconds = Seconds(), .rows = rows_};
    for (const auto& database : databases_) {
      result.waits += database->Waits();
      if (!database->Problem().empty()) {
        result.problems.push_back({database->Name(), database->Problem()});
      }
    }
    return result;
  }

  const LiveRequest& request_;
  std::vector<std::unique_ptr<LiveDatabase>> databases_;
  const Clock::time_point start_ = Clock::now();
  std::int64_t rows_ = 0;
  std::int64_t skipped_ = 0;  ///< rows that nothing could take when they were due
  std::size_t turn_ = 0;
  int ticks_ = 0;
};

}  // namespace

bool HoldsDatabases(const std::filesystem::path& directory, const CatalogueView& catalogue) {
  return std::any_of(catalogue.databases.begin(), catalogue.databases.end(),
                     [&directory](const DatabaseView& each) { return HasFile(DatabaseFile(each, directory)); });
}

LiveResult WriteLive(const CatalogueView& catalogue, const LiveRequest& request) {
  return LiveDirectory(catalogue, request).Write();
}

}  // namespace corvo::telemetry::host
