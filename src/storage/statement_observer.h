#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "common/error.h"
#include "storage/storage_export.h"

namespace corvo::shared {

/// A compaction that the options of the storage left out: nothing was written, which is a success.
struct LeftOutCompaction {
  enum class Reason {
    kLittleToFree,  ///< less than `StorageOptions::compact_when_free`
    kTakesTooLong,  ///< more to write than `StorageOptions::compaction_limit`
  };

  Reason reason;
  double free_percent;  ///< the share of the file's bytes that it would have freed, as the options count it
  std::int64_t bytes;   ///< that it would have written: those of the pages in use
};

/// One statement that a storage ran or refused. The texts live for the duration of the call only.
struct StatementRecord {
  const char* database_path;
  const char* sql;
  std::chrono::steady_clock::time_point start;
  std::chrono::steady_clock::time_point end;  ///< equals `start` while the statement has not ended
  std::int64_t rows_changed;                  ///< rows deleted, inserted or updated by this statement alone
  const corvo::telemetry::common::Error& result;
  const LeftOutCompaction* left_out = nullptr;  ///< none, but for a compaction that was left out
};

/// Watches the statements of every storage of the process: progress, timings and traces come from it.
///
/// Called on the thread that runs the statement, with no lock held; several threads may call at once.
class CORVO_STORAGE_API StatementObserver {
 public:
  virtual ~StatementObserver();

  /// Called before the statement runs; does nothing unless overridden.
  virtual void OnStart(const StatementRecord& statement) noexcept;

  /// Called about five times a second while the statement runs, with `end` as the time of the call; rows and result are
  /// not known yet. Does nothing unless overridden, which must not use the storage. It comes between SQLite's own
  /// instructions, and so not while one of them takes long: not when compaction moves the finished pages into the file,
  /// nor while a lock is waited for.
  virtual void OnProgress(const StatementRecord& statement) noexcept;

  /// Asked before the options of the storage leave a compaction out; false has it made. True unless overridden.
  [[nodiscard]] virtual bool MayLeaveOutCompaction(const char* database_path) noexcept;

  /// Called when the statement has ended, whatever the outcome.
  virtual void OnEnd(const StatementRecord& statement) noexcept = 0;
};

/// Registers the observer for the whole process in place of the former one, which is returned; null watches nothing.
CORVO_STORAGE_API std::shared_ptr<StatementObserver> SetStatementObserver(std::shared_ptr<StatementObserver> observer);

/// The one in force; null when none is registered. From any thread.
[[nodiscard]] CORVO_STORAGE_API std::shared_ptr<StatementObserver> GetStatementObserver();

/// An observer that is registered for as long as the object lives; then the former one returns, on every path.
class CORVO_STORAGE_API StatementObserverScope {
 public:
  explicit StatementObserverScope(std::shared_ptr<StatementObserver> observer);
  StatementObserverScope(const StatementObserverScope&) = delete;
  StatementObserverScope& operator=(const StatementObserverScope&) = delete;
  ~StatementObserverScope();

 private:
  std::shared_ptr<StatementObserver> former_;
};

}  // namespace corvo::shared
