#pragma once

#include <filesystem>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// What a file is needed for.
enum class Access { kRead, kReadAndWrite };

/// Where the file itself is, and with it its journals; its name may be a link.
[[nodiscard]] std::filesystem::path RealPath(const std::filesystem::path& file);

/// Why nothing can be written to a file that this user may not write to.
[[nodiscard]] Problem NoPermission(const std::filesystem::path& file, const common::Error& record = {});

/// What a failure on a database file means to a person: its kind and the reason in a few words.
///
/// @param error the failure, as the storage library tells it.
[[nodiscard]] Problem ProblemOf(const common::Error& error, const std::filesystem::path& file, Access access);

}  // namespace corvo::telemetry::host
