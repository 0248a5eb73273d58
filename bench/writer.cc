// A collector that has a row to insert every few milliseconds, each in a transaction of its own, until it is told to
// end (SIGTERM). Then prints for each row when it was due and when it was in, in nanoseconds of the steady clock.
//
// writer DATABASE INSERT MILLISECONDS
//
// Rows are due whatever becomes of those before them: the rows that pile up behind a lock all count as late. Between
// two transactions it does something else for a moment, as programs do that have to gather what they write.

#include <fmt/core.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kBusyTimeoutMs = 30'000;
constexpr std::chrono::milliseconds kGathering{1};

volatile std::sig_atomic_t ended = 0;

struct Insert {
  Clock::time_point due;
  Clock::time_point done;
};

class Collector {
 public:
  Collector(const char* file, const char* insert) {
    Check(sqlite3_open_v2(file, &database_, SQLITE_OPEN_READWRITE, nullptr));
    sqlite3_busy_timeout(database_, kBusyTimeoutMs);
    Check(sqlite3_prepare_v2(database_, insert, -1, &insert_, nullptr));
  }
  Collector(const Collector&) = delete;
  Collector& operator=(const Collector&) = delete;
  ~Collector() {
    sqlite3_finalize(insert_);
    sqlite3_close(database_);
  }

  /// Whatever it takes: one that has waited in vain tries again.
  void InsertRow() {
    int code = SQLITE_BUSY;
    while (code == SQLITE_BUSY) {
      sqlite3_step(insert_);
      code = sqlite3_reset(insert_);
    }
    Check(code);
  }

 private:
  void Check(int code) {
    if (code != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database_));
    }
  }

  sqlite3* database_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
};

/// What was due when the end came is still inserted.
std::vector<Insert> Collect(Collector& collector, std::chrono::milliseconds interval) {
  std::vector<Insert> inserts;
  Clock::time_point end = Clock::time_point::max();
  for (Clock::time_point due = Clock::now(); due < end; due += interval) {
    std::this_thread::sleep_until(std::max(due, Clock::now() + kGathering));
    collector.InsertRow();
    inserts.push_back({due, Clock::now()});
    if (ended != 0) {
      end = std::min(end, inserts.back().done);
    }
  }
  return inserts;
}

std::int64_t Nanoseconds(Clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    fmt::print(stderr, "usage: writer DATABASE INSERT MILLISECONDS\n");
    return EXIT_FAILURE;
  }
  std::signal(SIGTERM, [](int /*signal*/) { ended = 1; });
  try {
    Collector collector(argv[1], argv[2]);
    for (const Insert& insert : Collect(collector, std::chrono::milliseconds(std::stoi(argv[3])))) {
      fmt::print("{} {}\n", Nanoseconds(insert.due), Nanoseconds(insert.done));
    }
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "writer: {}\n", error.what());
    return EXIT_FAILURE;
  }
}
