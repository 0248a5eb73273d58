#include "storage/statement.h"

#include <sqlite3.h>

namespace corvo::shared {

void StatementFinalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

}  // namespace corvo::shared
