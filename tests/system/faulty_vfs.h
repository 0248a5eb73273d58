#pragma once

#include <cstdint>
#include <string>

namespace corvo::test {

/// Instead of a result code: the process is killed in place of the operation.
inline constexpr int kKill = -1;

/// What goes wrong with the files that SQLite opens.
struct Fault {
  std::string operation;   ///< write, sync, truncate or delete
  int code = 0;            ///< SQLite's result code that the operation gives, or kKill
  std::int64_t first = 1;  ///< the first call that fails, counted from 1
  bool lasting = false;    ///< whether the later calls fail too, as on a disk that stays full
};

/// Reads "operation,code,first,lasting", for example "write,778,3,0".
[[nodiscard]] Fault ParseFault(const std::string& text);

/// Makes the fault happen in every file that SQLite opens from now on in this process. Once a process.
void InstallFault(const Fault& fault);

/// How often it has happened.
[[nodiscard]] std::int64_t FaultsFired();

}  // namespace corvo::test
