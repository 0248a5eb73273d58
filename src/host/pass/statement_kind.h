#pragma once

#include <string>
#include <string_view>

namespace corvo::telemetry::host {

/// What a statement of the module is for, told from its text.
struct StatementKind {
  enum class Step { kExpire, kTrim, kCount, kMeasure, kCompact, kOther };

  Step step = Step::kOther;
  std::string table = {};  ///< the one that it is about; empty for compaction and for statements of another form
};

/// Other forms than those of the module are `kOther`.
[[nodiscard]] StatementKind KindOf(std::string_view sql);

/// The step in a word or two, for people who wait: "deleting expired rows".
[[nodiscard]] const char* NameOf(StatementKind::Step step);

}  // namespace corvo::telemetry::host
