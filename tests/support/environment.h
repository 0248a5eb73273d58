#pragma once

namespace corvo::test {

/// Sets a variable of this process's environment; null removes it. Not thread-safe.
void SetEnvironment(const char* name, const char* value);

}  // namespace corvo::test
