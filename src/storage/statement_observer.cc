#include "storage/statement_observer.h"

#include <mutex>
#include <utility>

namespace corvo::shared {
namespace {

std::mutex mutex;
std::shared_ptr<StatementObserver> registered;

}  // namespace

StatementObserver::~StatementObserver() = default;

void StatementObserver::OnStart(const StatementRecord& /*statement*/) noexcept {}

void StatementObserver::OnProgress(const StatementRecord& /*statement*/) noexcept {}

bool StatementObserver::MayLeaveOutCompaction(const char* /*database_path*/) noexcept { return true; }

std::shared_ptr<StatementObserver> SetStatementObserver(std::shared_ptr<StatementObserver> observer) {
  const std::lock_guard lock(mutex);
  return std::exchange(registered, std::move(observer));
}

std::shared_ptr<StatementObserver> GetStatementObserver() {
  const std::lock_guard lock(mutex);
  return registered;
}

StatementObserverScope::StatementObserverScope(std::shared_ptr<StatementObserver> observer)
    : former_(SetStatementObserver(std::move(observer))) {}

StatementObserverScope::~StatementObserverScope() { SetStatementObserver(std::move(former_)); }

}  // namespace corvo::shared
