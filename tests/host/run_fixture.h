#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "host/host_process.h"
#include "support/temp_dir.h"

namespace corvo::test {

/// Generated databases, and the program run on them.
class RunTest : public testing::Test {
 protected:
  void Generate(const std::string& scale = "0.01") {
    const HostRun run = RunHost({"generate", "--data-dir", data_, "--scale", scale});
    ASSERT_EQ(run.exit_code, 0) << run.err;
  }

  HostRun Run(const std::vector<std::string>& more = {}, const std::vector<std::string>& environment = {}) {
    std::vector<std::string> words = {"run", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words, environment);
  }

  [[nodiscard]] std::filesystem::path File(const std::string& name) const {
    return std::filesystem::path(data_) / name;
  }

  TempDir folder_;
  std::string data_ = folder_ / "data";
};

}  // namespace corvo::test
