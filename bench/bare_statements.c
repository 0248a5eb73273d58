/* Runs the statements of a pass with SQLite and nothing else: what they cost by themselves.
 *
 * bare_statements equal|defaults DIRECTORY FILE
 *
 * The file has "file name, tab, SQL" in each line. As a pass does, each statement gets a connection of its own. "equal"
 * sets the connection as the storage library does (src/storage/connection/connection.cc), "defaults" leaves it as it
 * is. */

#include <sqlite3.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kLongestPath = 4096, kLongestLine = 65536, kBusyTimeoutMs = 5000 };

typedef struct {
  int id;
  int value;
} Setting;

static const Setting kSwitches[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},   {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0}, {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    {SQLITE_DBCONFIG_ENABLE_FKEY, 0}, {SQLITE_DBCONFIG_ENABLE_TRIGGER, 1}, {SQLITE_DBCONFIG_ENABLE_VIEW, 1},
};

static const Setting kLimits[] = {
    {SQLITE_LIMIT_LENGTH, 32 * 1024 * 1024},
    {SQLITE_LIMIT_SQL_LENGTH, 1024 * 1024},
    {SQLITE_LIMIT_EXPR_DEPTH, 500},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 1000},
    {SQLITE_LIMIT_ATTACHED, 1},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

static const char kPragmas[] =
    "PRAGMA cell_size_check=ON; PRAGMA mmap_size=0; PRAGMA secure_delete=FAST; PRAGMA main.cache_size=-2000;";

static int SetAsTheStorageDoes(sqlite3* database) {
  sqlite3_busy_timeout(database, kBusyTimeoutMs);
  for (size_t index = 0; index < sizeof kSwitches / sizeof kSwitches[0]; ++index) {
    const int code = sqlite3_db_config(database, kSwitches[index].id, kSwitches[index].value, NULL);
    if (code != SQLITE_OK) {
      return code;
    }
  }
  for (size_t index = 0; index < sizeof kLimits / sizeof kLimits[0]; ++index) {
    sqlite3_limit(database, kLimits[index].id, kLimits[index].value);
  }
  return sqlite3_exec(database, kPragmas, NULL, NULL, NULL);
}

static int RunOn(sqlite3* database, const char* sql) {
  sqlite3_stmt* statement = NULL;
  int code = sqlite3_prepare_v2(database, sql, -1, &statement, NULL);
  if (code == SQLITE_OK) {
    do {
      code = sqlite3_step(statement);
    } while (code == SQLITE_ROW);
    code = code == SQLITE_DONE ? SQLITE_OK : code;
  }
  sqlite3_finalize(statement);
  return code;
}

/* A table that is missing is no failure, as in a pass. */
static int RunStatement(const char* path, const char* sql, int equal) {
  const int equal_flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW;
  sqlite3* database = NULL;
  int code = sqlite3_open_v2(path, &database, equal ? equal_flags : SQLITE_OPEN_READWRITE, NULL);
  if (code == SQLITE_OK && equal) {
    code = SetAsTheStorageDoes(database);
  }
  if (code == SQLITE_OK) {
    code = RunOn(database, sql);
  }
  const int failed = code != SQLITE_OK && strncmp(sqlite3_errmsg(database), "no such table:", 14) != 0;
  if (failed) {
    fprintf(stderr, "bare_statements: %s: %s in: %s\n", path, sqlite3_errmsg(database), sql);
  }
  sqlite3_close(database);
  return failed;
}

static int RunLine(const char* directory, char* line, int equal) {
  char path[kLongestPath];
  char* const tab = strchr(line, '\t');
  if (tab == NULL) {
    fprintf(stderr, "bare_statements: a line without a tab: %s\n", line);
    return 1;
  }
  *tab = '\0';
  tab[1 + strcspn(tab + 1, "\n")] = '\0';
  const int length = snprintf(path, sizeof path, "%s/%s", directory, line);
  if (length < 0 || (size_t)length >= sizeof path) {
    fprintf(stderr, "bare_statements: the path is too long: %s/%s\n", directory, line);
    return 1;
  }
  return RunStatement(path, tab + 1, equal);
}

int main(int argc, char** argv) {
  static char line[kLongestLine];
  const int equal = argc == 4 && strcmp(argv[1], "equal") == 0;
  if (argc != 4 || (!equal && strcmp(argv[1], "defaults") != 0)) {
    fprintf(stderr, "usage: bare_statements equal|defaults DIRECTORY FILE\n");
    return EXIT_FAILURE;
  }
  FILE* const statements = fopen(argv[3], "r");
  if (statements == NULL) {
    perror(argv[3]);
    return EXIT_FAILURE;
  }
  int failed = 0;
  while (!failed && fgets(line, sizeof line, statements) != NULL) {
    failed = RunLine(argv[2], line, equal);
  }
  fclose(statements);
  return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
