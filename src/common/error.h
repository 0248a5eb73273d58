#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <system_error>

#include "common/commons_export.h"

namespace corvo::telemetry::common {

/// Where a failure came from. Values and spellings are part of the record's contract with hosts and frozen.
enum ErrorCategory : std::int32_t {
  EC_NoError = 0,
  EC_Unknown = 1,
  EC_Std = 2,
  EC_WinApi = 3,
  EC_SEH = 4,
  EC_Custom = 5,
};

// A declaration of its own: GCC takes no standard attribute beside an export macro.
class [[nodiscard]] Error;

/// The one result and failure record of the system.
///
/// A default-constructed record means success. The record is an ordinary value: copies are independent, and distinct
/// records may be used from distinct threads. It is also the object thrown inside an operation when a step fails; it
/// never leaves the operation as an exception.
class CORVO_COMMONS_API Error {
 public:
  Error();

  /// Category `EC_Std`, code 1, `what` = `e.what()`, `type` = run-time type name of `e`.
  explicit Error(const std::exception& e);

  /// As above; the system's code becomes part of `what`, not of `code`:
  /// "message: '<what>' system code : '<category>:<value>'".
  explicit Error(const std::system_error& e);

  Error(const Error&);
  Error& operator=(const Error&);

  /// The record moved from keeps its category and its code; its texts are whatever the strings leave.
  Error(Error&&) noexcept;
  Error& operator=(Error&&) noexcept;

  virtual ~Error();

  /// True when category or code is non-zero.
  [[nodiscard]] bool Failed() const noexcept { return category != EC_NoError || code != 0; }

  ErrorCategory category = EC_NoError;
  std::int64_t code = 0;
  std::string what;    ///< human-readable message
  std::string type;    ///< run-time type name of the exception that caused it, or a label
  std::string origin;  ///< where it arose; empty in every record that this system makes
};

/// Turns a caught exception of any type into a record. Never throws; a null pointer reads as an unknown exception.
[[nodiscard]] CORVO_COMMONS_API Error MakeErrorFromException(std::exception_ptr p) noexcept;

/// Writes the record's JSON text: compact, members in byte order of their names, empty texts left out.
///
/// @param buffer null to learn the size only; otherwise room for the returned number of bytes, owned by the caller.
/// @return length of the JSON text plus one, for the terminating zero.
/// @throws nlohmann::json::exception when a text is not valid UTF-8.
CORVO_COMMONS_API std::int32_t ErrorToJson(const Error& error, char* buffer);

/// The record's JSON text for people and logs, or "(null)" when the record cannot be written as JSON.
[[nodiscard]] CORVO_COMMONS_API std::string ErrorText(const Error& error);

}  // namespace corvo::telemetry::common
