#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Where compaction needs room: beside the database, and where SQLite puts temporary files.
struct CompactionPlaces {
  std::filesystem::path data;
  std::filesystem::path temporary;
};

/// Looks at a database file from outside: whether it is an ordinary file that this user may read and write, in a folder
/// where he may write. Opens it for reading.
///
/// @return why a pass cannot work on it; none when nothing of this stands against it.
[[nodiscard]] std::optional<Problem> LookFromOutside(const std::filesystem::path& file);

/// Looks at a database file before a pass: whether it can be opened for writing, is locked, is sound, holds what the
/// rules would misread, and has room to be compacted. Counts its rows. Changes nothing, and waits for a lock no longer
/// than the storage's busy timeout allows, twice at most.
///
/// The verdict on its soundness is remembered by the storage library, so the pass does not read the file again for it.
/// @param directory the one that the file is in; its room is that of `places.data`.
[[nodiscard]] DatabaseReport LookAtDatabase(const DatabaseView& database, const std::vector<ContractView>& contracts,
                                            const std::filesystem::path& directory, const CompactionPlaces& places);

/// The path of the database's file in the directory.
[[nodiscard]] std::filesystem::path DatabaseFile(const DatabaseView& database, const std::filesystem::path& directory);

/// Whether anything has the name of the file, be it a link to nothing; also true when that cannot be found out.
[[nodiscard]] bool HasFile(const std::filesystem::path& file);

/// Whether the file holds nothing, as SQLite reckons: it takes one byte for nothing, too, and writes over it.
[[nodiscard]] bool IsEmpty(const std::filesystem::path& file);

/// The bytes of the file; 0 when it is not there.
[[nodiscard]] std::int64_t FileBytes(const std::filesystem::path& file);

/// The bytes of the file and of its write-ahead log; 0 for what is not there.
[[nodiscard]] std::int64_t SizeWithLog(const std::filesystem::path& file);

/// Counts rows and bytes again, after the run, and finds each table's largest rowid. A database that is busy is not
/// asked twice.
void CountAfterwards(DatabaseReport& database);

/// Finds the oldest row that the run left in each table, which reads the tables.
void FindOldest(DatabaseReport& database);

}  // namespace corvo::telemetry::host
