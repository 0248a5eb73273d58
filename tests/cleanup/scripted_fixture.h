#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "cleanup/data_cleanup.h"
#include "support/contract_factory.h"
#include "support/log_capture.h"
#include "support/record_matchers.h"
#include "support/scripted_storage.h"

namespace corvo::test {

using telemetry::cleanup::DatabaseEntry;

/// The engine over a storage library that answers as a test wants.
class ScriptedTest : public testing::Test {
 protected:
  using Error = telemetry::common::Error;

  /// Whatever an operation met, it leaves no storage open and no command alive.
  void TearDown() override {
    EXPECT_EQ(storage.open_storages, 0);
    EXPECT_EQ(storage.live_commands, 0);
  }

  ScriptedStorage storage;
  ContractFactory contracts;
  google::protobuf::Message* contract = contracts.Make("Samples", {.database = "Log", .max_size_mb = 1});
  DataCleanup collector;
};

/// A record as a storage library may return it.
telemetry::common::Error Record(telemetry::common::ErrorCategory category, std::int64_t code, const std::string& what);

/// An operation of the engine that returns a record, on the one contract of a test.
struct Operation {
  const char* name;
  std::function<telemetry::common::Error(const DataCleanup&, const google::protobuf::Message*)> run;

  friend void PrintTo(const Operation& value, std::ostream* stream) { *stream << value.name; }
};
std::vector<Operation> Operations();

/// Throws each kind of thing that a storage library may throw.
struct Thrown {
  const char* name;
  std::function<void()> raise;

  friend void PrintTo(const Thrown& value, std::ostream* stream) { *stream << value.name; }
};
std::vector<Thrown> ThrownThings();

}  // namespace corvo::test
