#include "storage/connection/verdicts.h"

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>

#include "storage/connection/file_access.h"
#include "storage/connection/soundness.h"
#include "storage/result_code.h"

namespace corvo::shared {
namespace {

using std::chrono::steady_clock;
using telemetry::common::Error;

// Long enough for a visit, short against the life of a damaged disk.
constexpr std::chrono::minutes kVerdictLasts{5};

/// The fields of the first page by which a transaction of SQLite is told from any other change
/// (https://www.sqlite.org/fileformat.html#the_database_header).
struct Header {
  std::uint32_t changes = 0;    ///< change counter
  std::uint32_t valid_for = 0;  ///< the counter when the size was written
  std::uint64_t bytes = 0;      ///< size of the database
};

struct Stamp {
  FileState state;
  std::optional<Header> header;  ///< none when it could not be read
};

struct Verdict {
  Stamp stamp;
  Error result;
  steady_clock::time_point found;
};

std::mutex mutex;
std::map<std::string, Verdict> verdicts;

std::uint32_t BigEndian(const unsigned char* bytes, int size) {
  std::uint32_t value = 0;
  for (int index = 0; index < size; ++index) {
    value = value << 8U | bytes[index];
  }
  return value;
}

std::optional<Header> ReadHeader(sqlite3* handle) {
  sqlite3_file* file = nullptr;
  std::array<unsigned char, 100> page{};
  // Through SQLite's own open file: closing another one would release the locks of this process.
  if (sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || file == nullptr ||
      file->pMethods == nullptr ||
      file->pMethods->xRead(file, page.data(), static_cast<int>(page.size()), 0) != SQLITE_OK) {
    return std::nullopt;
  }
  const std::uint32_t stored = BigEndian(&page[16], 2);
  const std::uint64_t page_size = stored == 1 ? 65'536 : stored;
  return Header{BigEndian(&page[24], 4), BigEndian(&page[92], 4), page_size * BigEndian(&page[28], 4)};
}

Stamp StampOf(sqlite3* handle, const std::string& file) {
  return {LookAtOpen(handle, file.c_str()), ReadHeader(handle)};
}

/// Whether the file is what it was, or what a transaction of SQLite has made of it.
bool IsOrdinaryChange(const Stamp& before, const Stamp& now) {
  if (now.state.IsUnchanged(before.state)) {
    return true;
  }
  return now.state.IsSameFile(before.state) && before.header && now.header &&
         now.header->changes - before.header->changes - 1 < 0x7fff'ffffU &&
         now.header->valid_for == now.header->changes && now.header->bytes <= now.state.size;
}

bool StillHolds(const Verdict& verdict, const Stamp& now) {
  if (steady_clock::now() - verdict.found > kVerdictLasts) {
    return false;
  }
  // Whatever changed a damaged file may have mended it.
  return verdict.result.Failed() ? now.state.IsUnchanged(verdict.stamp.state) : IsOrdinaryChange(verdict.stamp, now);
}

std::optional<Error> Recall(const std::string& file, const Stamp& now) {
  const std::lock_guard lock(mutex);
  const auto known = verdicts.find(file);
  if (known == verdicts.end() || !StillHolds(known->second, now)) {
    return std::nullopt;
  }
  known->second.stamp = now;
  return known->second.result;
}

void Remember(const std::string& file, const Stamp& stamp, const Error& result) {
  const std::lock_guard lock(mutex);
  const auto now = steady_clock::now();
  std::erase_if(verdicts, [now](const auto& verdict) { return now - verdict.second.found > kVerdictLasts; });
  verdicts.insert_or_assign(file, Verdict{stamp, result, now});
}

void Restamp(const std::string& file, const Stamp& stamp) noexcept {
  const std::lock_guard lock(mutex);
  if (const auto known = verdicts.find(file); known != verdicts.end()) {
    known->second.stamp = stamp;
  }
}

void Forget(const std::string& file) noexcept {
  const std::lock_guard lock(mutex);
  verdicts.erase(file);
}

bool IsKnownAsItStands(const std::string& file, const Stamp& now) noexcept {
  const std::lock_guard lock(mutex);
  const auto known = verdicts.find(file);
  return known != verdicts.end() && StillHolds(known->second, now);
}

}  // namespace

Error CheckSoundness(sqlite3* handle, const std::string& file) {
  const Stamp stamp = StampOf(handle, file);
  if (std::optional<Error> known = Recall(file, stamp); known) {
    return *std::move(known);
  }
  Error result = FindDamage(handle);
  // A check that could not be made to its end says nothing of the file.
  if (!result.Failed() || IsDamaged(result)) {
    Remember(file, stamp, result);
  }
  return result;
}

void KeepVerdict(sqlite3* handle, const std::string& file, const Error& result) noexcept {
  if (IsDamaged(result)) {
    Forget(file);
  } else {
    Restamp(file, StampOf(handle, file));
  }
}

void CloseKeepingVerdict(sqlite3* handle, const std::string& file) noexcept {
  const Stamp before = StampOf(handle, file);
  const bool known = IsKnownAsItStands(file, before);
  sqlite3_close(handle);
  if (known) {
    FileState after = GlanceAt(file.c_str());
    const bool unchanged = after.IsUnchanged(before.state);
    after.volume = before.state.volume;
    after.file = before.state.file;
    Restamp(file, {after, unchanged ? before.header : std::nullopt});
  }
}

}  // namespace corvo::shared
