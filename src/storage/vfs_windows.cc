#include "storage/vfs.h"

namespace corvo::shared {

// Pipes have names of their own here, which no file of a folder can have.
void KeepOpeningFromWaiting(sqlite3_vfs& /*platform*/) {}
void LetOpeningWait(sqlite3_vfs& /*platform*/) {}

}  // namespace corvo::shared
