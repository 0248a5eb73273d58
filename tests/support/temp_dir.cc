#include "support/temp_dir.h"

#include <random>

namespace corvo::test {

TempDir::TempDir() {
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() / ("corvo-test-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace corvo::test
