#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/samples/database_writer.h"
#include "host/samples/row_source.h"

namespace corvo::telemetry::host {

/// A table that rows can be added to.
struct LiveTable {
  std::string name;
  std::vector<ColumnPlan> columns;
  RowSource source;
};

/// A database that rows are added to while others use it; open for as long as its file is there.
class LiveDatabase {
 public:
  /// @param directory absolute.
  LiveDatabase(const DatabaseView& view, const std::vector<ContractView>& contracts,
               const std::filesystem::path& directory, std::uint64_t seed);

  /// Those of its tables that it has now; they live as long as it does. None when it has no file, while another program
  /// holds it locked, and once it has a problem.
  [[nodiscard]] std::vector<LiveTable*> Tables();

  /// Adds a row of this moment to each of the tables, in one transaction. A table may be there more than once.
  ///
  /// @return how many were added: all of them or none.
  std::int64_t Write(const std::vector<LiveTable*>& tables);

  [[nodiscard]] const std::string& Name() const { return name_; }

  /// How often a lock of another program was in the way.
  [[nodiscard]] std::int64_t Waits() const { return waits_; }

  /// Why nothing is written to it any more; empty while it is.
  [[nodiscard]] const std::string& Problem() const { return problem_; }

 private:
  [[nodiscard]] bool Open();
  void Append(const std::vector<LiveTable*>& tables);
  void GiveUp(const std::runtime_error& failure);

  std::string name_;
  std::filesystem::path file_;
  std::vector<LiveTable> tables_;
  std::unique_ptr<DatabaseAppender> appender_;
  std::int64_t now_ = 0;  ///< of the last rows: times never go back
  std::int64_t waits_ = 0;
  int failures_ = 0;  ///< one after the other
  std::string problem_;
};

}  // namespace corvo::telemetry::host
