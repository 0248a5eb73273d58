#pragma once

#include <sqlite3.h>

#include <memory>

namespace corvo::shared {

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// A prepared statement, finalised with its owner.
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

}  // namespace corvo::shared
