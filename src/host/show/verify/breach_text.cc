#include "host/show/verify/breach_text.h"

#include <fmt/core.h>

#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

std::string TooOld(const Breach& breach) {
  const std::string limit = fmt::format("older than {}", Counted(breach.days, "day"));
  const std::string rows = Counted(breach.number, "row");
  if (!breach.row) {
    return fmt::format("{} {}", rows, limit);
  }
  const std::string time = Printable(breach.row->time);
  return breach.number == 1 ? fmt::format("row {} is {} ({})", breach.row->rowid, limit, time)
                            : fmt::format("{} {} (row {}: {})", rows, limit, breach.row->rowid, time);
}

std::string Lost(const Breach& breach) {
  const std::string rows = Counted(breach.number, "row");
  if (breach.all_gone) {
    return fmt::format("the {} is gone, with the {} that the run left", breach.table.empty() ? "file" : "table", rows);
  }
  return breach.during_run ? fmt::format("{} that no rule named went during the run", rows)
                           : fmt::format("{} of the {} that the run left {} gone since", WithSeparators(breach.number),
                                         Counted(breach.allowed, "row"), breach.number == 1 ? "has" : "have");
}

std::string What(const Breach& breach) {
  switch (breach.promise) {
    case Promise::kCleaned:
      return "the run did not clean it: " + Printable(breach.reason);
    case Promise::kSound:
      return "damaged: " + Printable(breach.reason);
    case Promise::kNoFreePages:
      return fmt::format("{} ({}); a run leaves none", Counted(breach.number, "free page"),
                         HumanBytes(breach.number * breach.allowed));
    case Promise::kNoneTooOld:
      return TooOld(breach);
    case Promise::kWithinLimit:
      return fmt::format("{} too many; a run leaves {} at most", Counted(breach.number, "row"),
                         WithSeparators(breach.allowed));
    case Promise::kNothingLost:
      break;
  }
  return Lost(breach);
}

}  // namespace

std::string BreachText(const Breach& breach) {
  return breach.table.empty() ? What(breach) : breach.table + ": " + What(breach);
}

}  // namespace corvo::telemetry::host
