#pragma once

#include <memory>
#include <string>
#include <vector>

#include "storage/statement_observer.h"

namespace corvo::test {

/// One statement that a storage ran.
struct Statement {
  std::string file;  ///< file name of the database
  std::string sql;
  std::int64_t rows_changed;
  std::int64_t code;  ///< code of its result, 0 for success
};

/// Records every statement that storages run while the object lives. One at a time.
class StatementLog {
 public:
  StatementLog();
  StatementLog(const StatementLog&) = delete;
  StatementLog& operator=(const StatementLog&) = delete;
  ~StatementLog();

  [[nodiscard]] std::vector<Statement> All() const;

  /// The texts alone, in order.
  [[nodiscard]] std::vector<std::string> Sql() const;

 private:
  class Recorder;
  std::shared_ptr<Recorder> recorder_;
  std::shared_ptr<shared::StatementObserver> former_;
};

}  // namespace corvo::test
