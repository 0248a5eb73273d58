#include "system/faulty_vfs.h"

#include <sqlite3.h>

#include <map>
#include <sstream>
#include <stdexcept>

#include "system/process_control.h"

namespace corvo::test {
namespace {

Fault fault;
std::int64_t calls = 0;
std::int64_t fired = 0;

bool Fires(const char* operation) {
  if (fault.operation != operation) {
    return false;
  }
  ++calls;
  const bool fires = calls == fault.first || (fault.lasting && calls > fault.first);
  if (fires && fault.code == kKill) {
    KillThisProcess();
  }
  fired += fires ? 1 : 0;
  return fires;
}

/// SQLite's own methods with a few replaced. A file keeps its own layout: only its table of methods is exchanged.
struct Methods : sqlite3_io_methods {
  explicit Methods(const sqlite3_io_methods* methods) : sqlite3_io_methods(*methods), real(methods) {}

  const sqlite3_io_methods* real;
};

const sqlite3_io_methods* Real(sqlite3_file* file) { return static_cast<const Methods*>(file->pMethods)->real; }

int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 offset) {
  return Fires("write") ? fault.code : Real(file)->xWrite(file, data, size, offset);
}

int Sync(sqlite3_file* file, int flags) { return Fires("sync") ? fault.code : Real(file)->xSync(file, flags); }

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return Fires("truncate") ? fault.code : Real(file)->xTruncate(file, size);
}

const sqlite3_io_methods* Faulty(const sqlite3_io_methods* real) {
  static std::map<const sqlite3_io_methods*, Methods> tables;
  Methods& table = tables.try_emplace(real, real).first->second;
  table.xWrite = &Write;
  table.xSync = &Sync;
  table.xTruncate = &Truncate;
  return &table;
}

sqlite3_vfs* real_vfs = nullptr;

int Open(sqlite3_vfs* /*vfs*/, sqlite3_filename name, sqlite3_file* file, int flags, int* out_flags) {
  const int code = real_vfs->xOpen(real_vfs, name, file, flags, out_flags);
  if (file->pMethods != nullptr) {
    file->pMethods = Faulty(file->pMethods);
  }
  return code;
}

int Delete(sqlite3_vfs* /*vfs*/, const char* name, int sync_directory) {
  return Fires("delete") ? fault.code : real_vfs->xDelete(real_vfs, name, sync_directory);
}

}  // namespace

Fault ParseFault(const std::string& text) {
  Fault result;
  std::istringstream stream(text);
  char comma = 0;
  std::getline(stream, result.operation, ',');
  if (!(stream >> result.code >> comma >> result.first >> comma >> result.lasting)) {
    throw std::invalid_argument("not a fault: " + text);
  }
  return result;
}

void InstallFault(const Fault& new_fault) {
  fault = new_fault;
  real_vfs = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs faulty_vfs = *real_vfs;
  faulty_vfs.zName = "faulty";
  faulty_vfs.xOpen = &Open;
  faulty_vfs.xDelete = &Delete;
  sqlite3_vfs_register(&faulty_vfs, 1);
}

std::int64_t FaultsFired() { return fired; }

}  // namespace corvo::test
