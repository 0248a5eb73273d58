#pragma once

#include <optional>
#include <string_view>

#include "common/error.h"
#include "storage/statement_observer.h"
#include "storage/storage_options.h"

struct sqlite3;

namespace corvo::shared {

// Compaction that would not pay, and is left out: VACUUM writes the whole file anew however little it frees, and keeps
// writers waiting meanwhile.

/// Whether a statement is the compaction that options can leave out: the text that a pass sends, and no other. Who
/// words it otherwise, or has it written elsewhere (VACUUM INTO), asks for just that.
[[nodiscard]] bool IsCompaction(std::string_view sql);

/// Whether the options leave out the compaction of the open database as it stands. Reads the counts of its pages, and
/// with `count_unused_bytes` each page of it; writes nothing. Waits for a lock as every reading does.
///
/// @param left_out gets what speaks against it; none: it is to be made.
[[nodiscard]] telemetry::common::Error JudgeCompaction(sqlite3* handle, const StorageOptions& options,
                                                       std::optional<LeftOutCompaction>& left_out);

}  // namespace corvo::shared
