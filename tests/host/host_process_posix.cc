#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "host/host_process.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const std::vector<std::string>& added) {
  std::vector<std::string> all = added;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    all.emplace_back(*entry);
  }
  return all;
}

/// Where the two streams of a process go.
class Streams {
 public:
  Streams(const std::string& out, const std::string& err) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
  }
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;
  ~Streams() { posix_spawn_file_actions_destroy(&actions_); }

  [[nodiscard]] const posix_spawn_file_actions_t* Actions() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

pid_t Start(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
            const Streams& streams, std::vector<std::string> words = {}) {
  words.emplace_back(CORVO_HOST_PROGRAM);
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = Environment(environment);
  pid_t process = 0;
  if (posix_spawnp(&process, words.front().c_str(), streams.Actions(), nullptr, Pointers(words).data(),
                   Pointers(variables).data()) != 0) {
    throw std::runtime_error("cannot start " + words.front());
  }
  return process;
}

int ExitCode(pid_t process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string Content(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

/// A terminal of its own, of which this side only reads.
class Terminal {
 public:
  Terminal() : reader_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(reader_);
    unlockpt(reader_);
    name_ = ptsname(reader_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() { close(reader_); }

  [[nodiscard]] const std::string& Name() const { return name_; }

  /// Everything that is written until nobody has the terminal open any more.
  [[nodiscard]] std::string ReadAll() const {
    std::string text;
    char part[4096];
    for (ssize_t got = 0; (got = read(reader_, part, sizeof part)) > 0;) {
      text.append(part, static_cast<std::size_t>(got));
    }
    return text;
  }

 private:
  int reader_;
  std::string name_;
};

}  // namespace

HostRun RunHost(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  const TempDir folder;
  const int exit_code = ExitCode(Start(arguments, environment, Streams(folder / "out", folder / "err")));
  return {exit_code, Content(folder / "out"), Content(folder / "err")};
}

HostRun RunHostThrough(const std::vector<std::string>& through, const std::vector<std::string>& arguments) {
  const TempDir folder;
  const int exit_code = ExitCode(Start(arguments, {}, Streams(folder / "out", folder / "err"), through));
  return {exit_code, Content(folder / "out"), Content(folder / "err")};
}

HostRun RunHostOnTerminal(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  const Terminal terminal;
  const pid_t process = Start(arguments, environment, Streams(terminal.Name(), terminal.Name()));
  const std::string text = terminal.ReadAll();
  return {ExitCode(process), text, ""};
}

HostRun RunHostOnFullDisk(const std::vector<std::string>& arguments) {
  const TempDir folder;
  const int exit_code = ExitCode(Start(arguments, {}, Streams("/dev/full", folder / "err")));
  return {exit_code, "", Content(folder / "err")};
}

HostRun RunHostMute(const std::vector<std::string>& arguments) {
  return {ExitCode(Start(arguments, {}, Streams("/dev/full", "/dev/full"))), "", ""};
}

}  // namespace corvo::test
