#include "storage/connection/connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "common/text.h"
#include "storage/connection/compaction.h"
#include "storage/connection/copy.h"
#include "storage/connection/failure.h"
#include "storage/connection/soundness.h"
#include "storage/connection/statement_end.h"
#include "storage/connection/verdicts.h"
#include "storage/statement_observer.h"
#include "storage/telemetry_storage.h"

namespace corvo::shared {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using telemetry::common::Error;

// Enough to read what can be read of a damaged file; its trees of pages may lead back to themselves.
constexpr milliseconds kDamagedReadLimit{10'000};

struct Setting {
  int id;
  int value;
};

constexpr Setting kSwitches[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    // A foreign key of the file would delete rows that no rule names. It is SQLite's default, which builds can change.
    {SQLITE_DBCONFIG_ENABLE_FKEY, 0},
};

// Far above what rows of telemetry need. A short text in the schema can ask for values as long as the limit lets it.
// Compaction attaches one database, so none is too few; the schema's own texts count against the length of SQL.
constexpr Setting kLimits[] = {
    {SQLITE_LIMIT_LENGTH, 32 * 1024 * 1024},
    {SQLITE_LIMIT_SQL_LENGTH, 1024 * 1024},
    {SQLITE_LIMIT_EXPR_DEPTH, 500},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 1000},
    {SQLITE_LIMIT_ATTACHED, 1},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

// In force before the file is read. secure_delete: deleted content is overwritten where its page is written anyway, and
// whole free pages go with the next compaction. Set because builds of SQLite differ in their default.
constexpr const char* kPragmas = "PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; PRAGMA secure_delete=FAST;";

// SQLite's own default, in KiB: the header of the file can ask for any size. In force once the schema has been read.
constexpr const char* kCacheSize = "PRAGMA main.cache_size=-2000;";

int Access(const StorageOptions& options) {
  // A storage is used from one thread at a time, and an interrupt needs no lock.
  constexpr int kAlways = SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX;
  return kAlways | (options.read_only ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
}

bool Set(sqlite3* handle, int id, int value) { return sqlite3_db_config(handle, id, value, nullptr) == SQLITE_OK; }

// Makes a new connection safe for files of unknown origin, and alike on every platform. Neither reads the file nor
// takes a lock.
Error SetConnectionOptions(sqlite3* handle, bool triggers_and_views) {
  const bool set = std::all_of(std::begin(kSwitches), std::end(kSwitches),
                               [handle](const Setting& option) { return Set(handle, option.id, option.value); });
  const int on = triggers_and_views ? 1 : 0;
  if (!set || !Set(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, on) || !Set(handle, SQLITE_DBCONFIG_ENABLE_VIEW, on)) {
    return Failure(ResultCode::kMisuse, "this build of SQLite lacks a protection");
  }
  for (const Setting& limit : kLimits) {
    sqlite3_limit(handle, limit.id, limit.value);
  }
  return {};
}

bool Execute(sqlite3* handle, const char* sql) {
  return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

/// Until 3.44, SQLite bars triggers and views of a distrusted schema from virtual tables, its own full-text and spatial
/// indexes among them, and triggers can keep such indexes. For a statement that needs one the schema is trusted.
/// Functions with side effects stay barred all the same: SQLite allows them in direct statements only.
class TrustedSchema {
 public:
  explicit TrustedSchema(sqlite3* handle) : handle_(handle) { Set(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 1); }
  TrustedSchema(const TrustedSchema&) = delete;
  TrustedSchema& operator=(const TrustedSchema&) = delete;
  ~TrustedSchema() { Set(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0); }

 private:
  sqlite3* handle_;
};

bool NeedsTrust(const Error& error) { return error.what.starts_with("unsafe use of virtual table"); }

/// The characters that mean something in a URI are escaped (https://www.sqlite.org/uri.html).
std::string ImmutableUri(const std::string& file) {
  std::string uri = file.starts_with('/') ? "file://" : "file:///";
  for (const char letter : file) {
    const bool special = letter == '%' || letter == '?' || letter == '#';
    uri += special ? (letter == '%' ? "%25" : letter == '?' ? "%3f" : "%23") : std::string(1, letter);
  }
  return uri + "?immutable=1";
}

Error Interrupted() { return Failure(ResultCode::kInterrupt, "by the host"); }

int Milliseconds(milliseconds time) {
  return static_cast<int>(std::clamp<std::int64_t>(time.count(), 0, std::numeric_limits<int>::max()));
}

}  // namespace

Connection::Connection(const DatabasePath& database)
    : path_(database.path), options_(GetStorageOptions()), open_error_(database.error) {
  if (!open_error_.Failed()) {
    open_error_ = Open(database.name);
  }
}

Connection::~Connection() {
  const FileGuard guard(files_);
  if (handle_ != nullptr && options_.check_soundness) {
    CloseKeepingVerdict(handle_, files_.database);
  } else {
    sqlite3_close(handle_);
  }
}

bool Connection::MayOpen(const std::string& name) const {
  return !options_.databases || options_.databases->contains(name);
}

Error Connection::Open(const std::string& name) {
  if (!MayOpen(name)) {
    return Failure(ResultCode::kCannotOpen, "not one of the databases that may be opened");
  }
  std::filesystem::path file;
  if (Error error = CheckDatabaseFile(path_, options_.read_only, file); error.Failed()) {
    return error;
  }
  file_ = telemetry::common::Utf8(file);
  files_.read_only = options_.read_only;
  const FileGuard guard(files_);
  return CanOpen(file_, options_.read_only) ? Error() : OpenOnce();
}

Error Connection::OpenOnce() {
  if (handle_ != nullptr) {
    return {};
  }
  return OpenHandle(file_, Access(options_));
}

// What lacks a protection is closed again, on every path.
Error Connection::OpenHandle(const std::string& name, int flags) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &opened, flags, GuardedVfs());
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> handle(opened, &sqlite3_close);
  if (code != SQLITE_OK) {
    return Failure(opened);
  }
  sqlite3_busy_timeout(opened, Milliseconds(options_.busy_timeout));
  sqlite3_set_authorizer(opened, &Connection::NoteChangedTable, this);
  Error error = SetConnectionOptions(opened, options_.triggers_and_views);
  handle_ = error.Failed() ? nullptr : handle.release();
  return error;
}

// Reading a database in write-ahead mode would make a log, and leave it behind. Without one nobody has the database
// open, and it can be read as if it never changed (https://www.sqlite.org/uri.html#uriimmutable); whether it did is
// seen afterwards.
Error Connection::OpenUnlocked() {
  sqlite3_close(std::exchange(handle_, nullptr));
  files_.log_missing = false;
  schema_prepared_ = false;
  unlocked_ = LookAt(files_.database.c_str());
  return OpenHandle(ImmutableUri(files_.database), Access(options_) | SQLITE_OPEN_URI);
}

bool Connection::HasChangedUnlocked() const {
  return unlocked_ && (!LookAt(files_.database.c_str()).IsUnchanged(*unlocked_) ||
                       LookAt((files_.database + "-wal").c_str()).kind != FileState::Kind::kMissing);
}

int Connection::NoteChangedTable(void* connection, int action, const char* table, const char* /*unused*/,
                                 const char* database, const char* trigger) {
  const bool changes = action == SQLITE_DELETE || action == SQLITE_UPDATE || action == SQLITE_INSERT;
  if (!changes || trigger != nullptr || database == nullptr || std::string_view(database) != "main") {
    return SQLITE_OK;
  }
  try {
    static_cast<Connection*>(connection)->changed_tables_.insert(table);
    return SQLITE_OK;
  } catch (...) {
    return SQLITE_DENY;  // No memory to note the table: the statement must not run unchecked.
  }
}

std::int64_t Connection::TotalChanges() const { return handle_ != nullptr ? sqlite3_total_changes64(handle_) : 0; }

// The total counts what triggers did as well; the other count stays what it was when nothing is changed.
std::int64_t Connection::RowsChanged(std::int64_t total_before) const {
  return TotalChanges() != total_before ? sqlite3_changes64(handle_) : 0;
}

Error Connection::Run(const std::string& sql, const Parameters& parameters, Rows& results) noexcept {
  const std::shared_ptr<StatementObserver> observer = GetStatementObserver();
  if (observer == nullptr) {
    return RunUnseen(sql, parameters, results);
  }
  const auto start = steady_clock::now();
  const Error unknown;
  const StatementRecord started{path_.c_str(), sql.c_str(), start, start, 0, unknown};
  observer->OnStart(started);
  heartbeat_.emplace(*observer, started);
  const std::int64_t before = TotalChanges();
  Error result = RunUnseen(sql, parameters, results);
  heartbeat_.reset();
  observer->OnEnd({path_.c_str(), sql.c_str(), start, steady_clock::now(), RowsChanged(before), result,
                   left_out_ ? &*left_out_ : nullptr});
  return result;
}

Error Connection::RunUnseen(const std::string& sql, const Parameters& parameters, Rows& results) noexcept {
  results = Rows();
  left_out_.reset();
  return Guarded([&] { return RunChecked(sql, parameters, results); });
}

Error Connection::CopyTo(const std::string& file) noexcept {
  return Guarded([&] {
    Error error = PrepareSchemaOnce();
    return error.Failed() ? error : CopyDatabase(handle_, file);
  });
}

template <class Work>
Error Connection::Guarded(const Work& work) noexcept {
  try {
    if (open_error_.Failed()) {
      return open_error_;
    }
    const FileGuard guard(files_);
    Error result = OpenOnce();
    result = result.Failed() ? result : Once(work);
    if (result.Failed() && files_.log_missing) {
      result = OpenUnlocked();
      result = result.Failed() ? result : Once(work);
    }
    return HasChangedUnlocked() ? Failure(ResultCode::kBusy, "somebody began to write while it was read") : result;
  } catch (...) {
    return telemetry::common::MakeErrorFromException(std::current_exception());
  }
}

template <class Work>
Error Connection::Once(const Work& work) {
  files_.refusal = nullptr;
  const Interruptible interruptible(handle_, heartbeat_ ? &*heartbeat_ : nullptr);
  const Deadline deadline(handle_, options_.statement_time_limit);
  Error result = StatementsInterrupted() ? Interrupted() : work();
  if (IsBusy(result) && StatementsInterrupted()) {
    return Interrupted();
  }
  // A journal that a collector replaces meanwhile is refused as well, and asked for again until the lock is free.
  return result.Failed() && !IsBusy(result) && files_.refusal != nullptr
             ? Failure(ResultCode::kCannotOpen, path_ + files_.suffix + ": " + files_.refusal)
             : result;
}

Error Connection::RunChecked(const std::string& sql, const Parameters& parameters, Rows& results) {
  if (Error error = PrepareSchemaOnce(); error.Failed()) {
    return error;
  }
  changed_tables_.clear();
  std::optional<TrustedSchema> trusted;
  Statement statement;
  Error error = Prepare(handle_, sql, statement);
  if (NeedsTrust(error)) {
    trusted.emplace(handle_);
    error = Prepare(handle_, sql, statement);
  }
  if (error.Failed()) {
    return error;
  }
  return OnlyReads(statement.get()) ? RunRead(statement.get(), parameters, results)
                                    : RunWrite(statement.get(), parameters, results);
}

Error Connection::RunWrite(sqlite3_stmt* statement, const Parameters& parameters, Rows& results) {
  if (Error error = Soundness(); error.Failed()) {
    return error;
  }
  if (Error error = CheckRowids(handle_, changed_tables_); error.Failed()) {
    return error;
  }
  if (IsCompaction(sqlite3_sql(statement))) {
    Error error = JudgeCompaction(handle_, options_, left_out_);
    const std::shared_ptr<StatementObserver> observer = GetStatementObserver();
    if (left_out_ && observer != nullptr && !observer->MayLeaveOutCompaction(path_.c_str())) {
      left_out_.reset();
    }
    if (error.Failed() || left_out_) {
      return error;
    }
  }
  Error result = shared::Run(statement, parameters, results);
  if (options_.check_soundness) {
    KeepVerdict(handle_, files_.database, result);
  }
  return result;
}

// What can still be read of a damaged file may be read, and of one that is too large to be looked through.
Error Connection::RunRead(sqlite3_stmt* statement, const Parameters& parameters, Rows& results) {
  Error soundness = Soundness();
  if (soundness.Failed() && !IsDamaged(soundness) && !IsOutOfMemory(soundness) && !IsTooBig(soundness)) {
    return soundness;
  }
  const Deadline deadline(handle_, soundness.Failed() ? kDamagedReadLimit : milliseconds(0));
  return shared::Run(statement, parameters, results);
}

Error Connection::Soundness() { return options_.check_soundness ? CheckSoundness(handle_, files_.database) : Error(); }

Error Connection::PrepareSchemaOnce() {
  if (schema_prepared_) {
    return {};
  }
  Error error = Execute(handle_, kPragmas) ? CheckSchema(handle_) : Failure(handle_);
  if (!error.Failed() && !Execute(handle_, kCacheSize)) {
    error = Failure(handle_);
  }
  schema_prepared_ = !error.Failed();
  return error;
}

}  // namespace corvo::shared
