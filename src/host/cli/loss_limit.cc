#include "host/cli/loss_limit.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "host/show/failure.h"
#include "host/show/units.h"
#include "storage/result_code.h"

namespace corvo::telemetry::host {
namespace {

/// Whether a run leaves the database alone, too. Copying can fail where a run would not, and so can a look that ran
/// into a bound.
bool IsForGood(const Problem& problem) {
  using Kind = Problem::Kind;
  const bool file =
      problem.kind == Kind::kCannotOpen || problem.kind == Kind::kPathTooLong || problem.kind == Kind::kUnfit;
  const common::Error& record = problem.record;
  const bool passing = problem.cause == Problem::Cause::kNoFileHandles || shared::IsFull(record) ||
                       shared::IsIoError(record) || shared::IsInterrupted(record) || shared::IsOutOfMemory(record);
  return file && !passing;
}

/// What cannot be foreseen now can be cleaned a moment later.
void RequireForesight(const RunReport& plan) {
  for (const DatabaseReport& database : plan.databases) {
    if (database.problem && !IsForGood(*database.problem)) {
      throw CommandFailure(kPassFailed,
                           fmt::format("nothing was deleted: what {} would lose cannot be foreseen ({}); --force "
                                       "cleans all the same",
                                       database.name, database.problem->reason));
    }
  }
}

/// A table that loses rows, and how many of a hundred.
struct Loss {
  const TableReport* table;
  double percent;
};

/// Those above the limit, the greatest first.
std::vector<Loss> LossesAbove(double max_loss, const RunReport& plan) {
  std::vector<Loss> losses;
  for (const DatabaseReport& database : plan.databases) {
    for (const TableReport& table : database.tables) {
      const auto rows = static_cast<double>(table.rows_before.value_or(0));
      const double percent = rows == 0 ? 0 : 100.0 * static_cast<double>(table.deleted.Sum()) / rows;
      if (percent > max_loss) {
        losses.push_back({&table, percent});
      }
    }
  }
  std::stable_sort(losses.begin(), losses.end(), [](const Loss& a, const Loss& b) { return a.percent > b.percent; });
  return losses;
}

}  // namespace

void RequireLittleLoss(const RunReport& plan, double max_loss) {
  constexpr std::size_t kMostNamed = 3;
  RequireForesight(plan);
  const std::vector<Loss> losses = LossesAbove(max_loss, plan);
  std::vector<std::string> texts;
  for (const Loss& loss : losses) {
    if (texts.size() < kMostNamed) {
      texts.push_back(fmt::format("{} would lose {:.1f} % ({} of {} rows)", loss.table->table, loss.percent,
                                  WithSeparators(loss.table->deleted.Sum()),
                                  WithSeparators(loss.table->rows_before.value_or(0))));
    }
  }
  if (losses.size() > kMostNamed) {
    texts.push_back(Counted(static_cast<std::int64_t>(losses.size() - kMostNamed), "more table"));
  }
  if (!losses.empty()) {
    throw CommandFailure(kFindings, fmt::format("nothing was deleted: {}, and --max-loss allows {:g} %; plan shows all "
                                                "of it, --force cleans all the same",
                                                fmt::join(texts, ", "), max_loss));
  }
}

}  // namespace corvo::telemetry::host
