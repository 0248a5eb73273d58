#pragma once

#include <functional>
#include <string>

namespace corvo::test {

/// What SQLite asks the platform for: "open", "delete" or "access" of a path, empty for a temporary file without a
/// name.
struct FileCall {
  std::string operation;
  std::string path;
};

/// Watches the platform's side of SQLite's file access, beneath whatever the storage puts on top of it: every call is
/// shown before it happens, so that a test can also change the files at that very moment. One at a time; connections of
/// the test's own are watched as well.
class FileWatch {
 public:
  explicit FileWatch(std::function<void(const FileCall& call)> before);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();
};

}  // namespace corvo::test
