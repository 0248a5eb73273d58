#pragma once

#include <memory>

struct sqlite3_stmt;

namespace corvo::shared {

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const;
};

/// A prepared statement, finalised with its owner.
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

}  // namespace corvo::shared
