#pragma once

#include <chrono>
#include <filesystem>

namespace corvo::test {

using Microseconds = std::chrono::microseconds;

/// A new seed; CORVO_TEST_SEED repeats the kills of a former run, as far as the machine does the same.
[[nodiscard]] unsigned Seed();

/// The shortest of three whole passes over copies of the fixture, the last of which stays in `work`: a moment within it
/// lies within most passes.
[[nodiscard]] Microseconds PassDuration(const std::filesystem::path& fixture, const std::filesystem::path& work);

/// Kills a pass some time after its begin; true when that came before the pass was done.
[[nodiscard]] bool KillPass(const std::filesystem::path& work, Microseconds moment);

}  // namespace corvo::test
