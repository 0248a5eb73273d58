#pragma once

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "support/database.h"

namespace corvo::test {

inline std::string Content(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline void Write(const std::string& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

inline std::string BigEndian(std::uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

inline constexpr std::string_view kJournalMagic = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";

/// A hot rollback journal without a page, whose end names the file that holds the other journals of its transaction.
/// SQLite deletes that file when it has played the journal back.
inline std::string JournalOfSeveralDatabases(Database& database, const std::string& super_journal) {
  constexpr std::uint32_t kSectorSize = 512;
  constexpr std::uint32_t kPages = 0;
  constexpr std::uint32_t kNonce = 0;
  std::string journal(kJournalMagic);
  journal += BigEndian(kPages) + BigEndian(kNonce);
  journal += BigEndian(static_cast<std::uint32_t>(database.Number("PRAGMA page_count")));
  journal += BigEndian(kSectorSize) + BigEndian(static_cast<std::uint32_t>(database.Number("PRAGMA page_size")));
  journal.resize(kSectorSize);

  // No page of a database has this number: the one that holds the byte of the locks.
  const std::uint32_t lock_page = 0x40000000 / static_cast<std::uint32_t>(database.Number("PRAGMA page_size")) + 1;
  std::uint32_t checksum = 0;
  for (const char character : super_journal) {
    checksum += static_cast<std::uint32_t>(static_cast<signed char>(character));
  }
  journal += BigEndian(lock_page) + super_journal;
  journal += BigEndian(static_cast<std::uint32_t>(super_journal.size())) + BigEndian(checksum);
  return journal.append(kJournalMagic);
}

}  // namespace corvo::test
