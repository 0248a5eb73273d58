#include "host/samples/sample_files.h"

#include <fmt/core.h>

#include <system_error>

#include "common/text.h"
#include "host/facts/data_directory.h"
#include "host/platform/interruption.h"
#include "host/samples/database_writer.h"
#include "host/samples/row_source.h"
#include "host/samples/staging.h"
#include "host/show/failure.h"
#include "storage/database_name.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

// Side files too: an old journal would be played back into the new file.
std::vector<std::string> FilesOf(const DatabaseView& database) {
  const std::string file = shared::AddDatabaseExtension(database.database);
  return {file, file + "-journal", file + "-wal", file + "-shm"};
}

void RefuseDatabases(const fs::path& directory, const CatalogueView& catalogue) {
  const auto refuse = [&directory](const fs::path& name) {
    throw CommandFailure(kUsage, fmt::format("{} already holds databases ({}); --force replaces those of the catalogue",
                                             common::Utf8(directory), common::Utf8(name)));
  };
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() == shared::kDatabaseExtension) {
      refuse(entry.path().filename());
    }
  }
  for (const DatabaseView& database : catalogue.databases) {
    for (const std::string& file : FilesOf(database)) {
      if (fs::exists(fs::symlink_status(directory / file))) {
        refuse(file);
      }
    }
  }
}

// A link leads to a file that somebody else keeps; a directory may hold anything.
void RefuseWhatIsNoFile(const fs::path& directory, const CatalogueView& catalogue) {
  for (const DatabaseView& database : catalogue.databases) {
    for (const std::string& file : FilesOf(database)) {
      const fs::file_status status = fs::symlink_status(directory / file);
      if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw CommandFailure(kUsage, fmt::format("{} is a link, a directory or something else that is no ordinary "
                                                 "file, and is not replaced; move it away",
                                                 common::Utf8(directory / file)));
      }
    }
  }
}

void LookAt(const fs::path& directory, const CatalogueView& catalogue, bool force) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    return;  // to be made
  }
  if (const std::string problem = ResolveDataDirectory(directory.string()).problem; !problem.empty()) {
    throw CommandFailure(kUsage, problem);
  }
  if (!force) {
    RefuseDatabases(directory, catalogue);
  }
  RefuseWhatIsNoFile(directory, catalogue);
}

// What was begun goes with the exception.
void RequireNoInterruption() {
  if (const int signal = InterruptionScope::Signal(); signal != 0) {
    throw CommandFailure(InterruptedBy(signal),
                         "interrupted: nothing was generated, and what was there before is kept");
  }
}

std::int64_t WriteDatabase(const fs::path& file, const DatabasePlan& plan, std::int64_t now, std::uint64_t seed) {
  DatabaseWriter writer(file);
  for (const TablePlan& table : plan.tables) {
    writer.CreateTable(table.table, ColumnsOf(*table.type));
  }
  std::int64_t rows = 0;
  for (const TablePlan& table : plan.tables) {
    writer.StartRows(table.table, ColumnsOf(*table.type));
    RowSource source(table, now, seed);
    for (std::int64_t row = 0; row < table.rows; ++row) {
      RequireNoInterruption();
      writer.Insert(source.Row(row));
    }
    rows += table.rows;
  }
  writer.Commit();
  return rows;
}

std::vector<WrittenDatabase> WriteDatabases(const Staging& staging, const GenerationPlan& plan,
                                            const SampleRequest& request) {
  std::vector<WrittenDatabase> written;
  for (const DatabasePlan& database : plan.databases) {
    const std::string name = shared::AddDatabaseExtension(database.database);
    const fs::path file = staging.NewFile(name);
    const std::int64_t rows = WriteDatabase(file, database, request.now, request.seed);
    written.push_back({database.database, request.directory / name, database.tables.size(), rows,
                       static_cast<std::int64_t>(fs::file_size(file))});
  }
  return written;
}

void PutInPlace(Staging& staging, const CatalogueView& catalogue, const GenerationPlan& plan) {
  for (const DatabaseView& database : catalogue.databases) {
    for (const std::string& file : FilesOf(database)) {
      staging.MoveAside(file);
    }
  }
  for (const DatabasePlan& database : plan.databases) {
    staging.Place(shared::AddDatabaseExtension(database.database));
  }
  staging.Keep();
}

}  // namespace

std::vector<WrittenDatabase> WriteSamples(const GenerationPlan& plan, const CatalogueView& catalogue,
                                          const SampleRequest& request) {
  LookAt(request.directory, catalogue, request.replace);
  Staging staging(request.directory);
  std::vector<WrittenDatabase> written = WriteDatabases(staging, plan, request);
  PutInPlace(staging, catalogue, plan);
  return written;
}

}  // namespace corvo::telemetry::host
