#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace corvo::test {

/// The database files of a folder, by name.
[[nodiscard]] std::vector<std::string> DatabaseFiles(const std::filesystem::path& directory);

/// Copies a folder of databases with their journals, as they are on disk.
void CopyDatabases(const std::filesystem::path& from, const std::filesystem::path& to);

/// What SQLite's full check finds in the databases of a folder; empty when they are whole.
[[nodiscard]] std::string Damage(const std::filesystem::path& directory);

/// Number of rows of the reference's tables that the folder's tables of the same name lack.
[[nodiscard]] std::int64_t MissingRows(const std::filesystem::path& directory, const std::filesystem::path& reference);

/// Whether the tables of both folders hold the same rows.
[[nodiscard]] bool SameRows(const std::filesystem::path& one, const std::filesystem::path& other);

/// Whether the tables of one database, by its file name, hold the same rows in both folders.
[[nodiscard]] bool SameRowsIn(const std::string& file, const std::filesystem::path& one,
                              const std::filesystem::path& other);

}  // namespace corvo::test
