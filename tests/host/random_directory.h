#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "support/contract_factory.h"
#include "support/database.h"
#include "support/temp_dir.h"
#include "support/test_catalogue.h"

namespace corvo::test {

/// Chances that are the same on every platform: the standard fixes what the engine yields, but not its distributions.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : random_(seed) {}

  /// From `first` to `last`.
  int Pick(int first, int last) {
    return first + static_cast<int>(random_() % static_cast<unsigned>(last - first + 1));
  }
  bool OneIn(int chances) { return Pick(1, chances) == 1; }

 private:
  std::mt19937_64 random_;
};

/// A data directory of random databases, and contracts of their tables as the catalogue of the process for as long as
/// it lives. Times count from the start of the test's clock. The same seed gives the same directory.
///
/// What a pass meets in the field is in it: databases and tables that are missing, over limits of all kinds, in both
/// journal modes, with triggers, indexes, free pages, unusual page sizes and leftovers of programs that were killed;
/// now and then a damaged file, a schema that the rules would misread, or a stray file named after a contract.
class RandomDirectory {
 public:
  explicit RandomDirectory(std::uint64_t seed);

  [[nodiscard]] const std::filesystem::path& Path() const { return folder_.Path(); }

  /// The names of the databases, whether they have files or not.
  [[nodiscard]] const std::vector<std::string>& Names() const { return names_; }

 private:
  void AddDatabase(const std::string& name);
  void AddContract(const std::string& database, const std::string& type, int max_size_mb);
  void Write(const std::string& name, const std::vector<std::string>& tables);
  void Settle(Database& database, const std::filesystem::path& made, const std::filesystem::path& file);
  void AddFiller(Database& database);
  void AddTable(Database& database, const std::string& table);
  void AddRows(Database& database, const std::string& table);
  void AddExtras(Database& database, const std::string& table);
  void Spoil(const std::filesystem::path& file);
  void AddStrayFile();

  Dice dice_;
  TempDir folder_;
  ContractFactory factory_;
  TestCatalogue catalogue_;
  std::vector<std::string> names_;
};

}  // namespace corvo::test
