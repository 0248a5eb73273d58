#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace corvo::test {

/// The files of one database, in memory. An empty side file does not exist.
struct Image {
  std::string database;
  std::string log;      ///< write-ahead log
  std::string journal;  ///< rollback journal

  bool operator==(const Image&) const = default;

  /// Reads the database and its side files.
  static Image Read(const std::filesystem::path& file);

  /// Writes them as new files.
  void Write(const std::filesystem::path& file) const;
};

// Numbers as SQLite stores them, most significant byte first. Outside the bytes, reading gives 0 and writing nothing.
[[nodiscard]] std::uint32_t ReadNumber(const std::string& bytes, std::size_t offset, std::size_t width = 4);
void WriteNumber(std::string& bytes, std::size_t offset, std::uint32_t number, std::size_t width = 4);

/// Page size of a database, from its header.
[[nodiscard]] std::size_t PageSize(const std::string& database);

/// Where the b-tree header of a page begins: page 1 starts with the header of the file.
[[nodiscard]] std::size_t TreeHeader(const std::string& database, std::uint32_t page);

}  // namespace corvo::test
