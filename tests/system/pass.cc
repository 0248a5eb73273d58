#include "system/pass.h"

#include <stdexcept>

namespace corvo::test {
namespace {

std::vector<std::string> Command(std::vector<std::string> command, const std::vector<std::string>& options) {
  command.insert(command.end(), {CORVO_PASS_RUNNER, CORVO_MODULE});
  command.insert(command.end(), options.begin(), options.end());
  return command;
}

}  // namespace

PassRunner::PassRunner(const std::filesystem::path& data_directory, const std::vector<std::string>& options,
                       const std::vector<std::string>& wrapper)
    : process_(Command(wrapper, options), {{"CORVO_TELEMETRY_DATA_DIR", data_directory.string()}}) {}

void PassRunner::Start() {
  process_.Send("pass");
  if (process_.ReadLine() != "started") {
    throw std::runtime_error("the pass did not start");
  }
}

nlohmann::json PassRunner::Result() {
  const auto line = process_.ReadLine();
  return line ? nlohmann::json::parse(*line) : nlohmann::json();
}

nlohmann::json PassRunner::Run() {
  Start();
  return Result();
}

std::int64_t PassRunner::FaultsFired() {
  process_.EndInput();
  return std::stoll(process_.ReadLine().value());
}

nlohmann::json RunPass(const std::filesystem::path& data_directory, const std::vector<std::string>& options) {
  PassRunner runner(data_directory, options);
  const nlohmann::json record = runner.Run();
  runner.Process().EndInput();
  if (runner.Process().Wait() != 0) {
    throw std::runtime_error("the pass runner did not end well, see above");
  }
  return record;
}

bool Succeeded(const nlohmann::json& record) { return record.at("category") == "EC_NoError" && record.at("code") == 0; }

}  // namespace corvo::test
