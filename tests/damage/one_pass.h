#pragma once

#include <cstdint>
#include <filesystem>

#include "common/error.h"

namespace corvo::test {

/// Size limit of the base databases, in megabytes.
inline constexpr std::uint32_t kMaxSizeMb = 1;

/// The file that a pass over the folder cleans.
[[nodiscard]] std::filesystem::path DatabaseFile(const std::filesystem::path& folder);

/// One pass over the folder by the contracts of the base databases, at the beginning of 2024-05-02.
[[nodiscard]] telemetry::common::Error CleanFolder(const std::filesystem::path& folder);

}  // namespace corvo::test
