#include "support/statement_log.h"

#include <filesystem>
#include <mutex>

namespace corvo::test {

class StatementLog::Recorder : public shared::StatementObserver {
 public:
  void OnEnd(const shared::StatementRecord& statement) noexcept override {
    const std::lock_guard lock(mutex);
    statements.push_back({std::filesystem::path(statement.database_path).filename().string(), statement.sql,
                          statement.rows_changed, statement.result.code});
  }

  std::mutex mutex;
  std::vector<Statement> statements;
};

StatementLog::StatementLog() : recorder_(std::make_shared<Recorder>()) {
  former_ = shared::SetStatementObserver(recorder_);
}

StatementLog::~StatementLog() { shared::SetStatementObserver(former_); }

std::vector<Statement> StatementLog::All() const {
  const std::lock_guard lock(recorder_->mutex);
  return recorder_->statements;
}

std::vector<std::string> StatementLog::Sql() const {
  std::vector<std::string> texts;
  for (const Statement& statement : All()) {
    texts.push_back(statement.sql);
  }
  return texts;
}

}  // namespace corvo::test
