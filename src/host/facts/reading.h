#pragma once

#include <filesystem>

#include "storage/storage_options.h"

namespace corvo::telemetry::host {

/// The options in force, for somebody who only looks at this database: for reading alone and without the check, which
/// would read the whole file first. As pages of a damaged file can lead back to themselves, a statement gets the time
/// in which any disk has read the whole file, or the limit in force when that is shorter; then it is interrupted.
[[nodiscard]] shared::StorageOptions ReadingOptions(const std::filesystem::path& file);

}  // namespace corvo::telemetry::host
