#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "system/child_process.h"

extern char** environ;

namespace corvo::test {
namespace {

void Check(int code, const char* what) {
  if (code != 0) {
    throw std::system_error(code, std::generic_category(), what);
  }
}

/// Read end and write end; neither is inherited by other children.
std::array<int, 2> MakePipe() {
  std::array<int, 2> ends{};
  Check(pipe(ends.data()) == 0 ? 0 : errno, "pipe");
  for (const int end : ends) {
    Check(fcntl(end, F_SETFD, FD_CLOEXEC) == 0 ? 0 : errno, "fcntl");
  }
  return ends;
}

std::vector<std::string> Environment(const std::map<std::string, std::string>& additions) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (additions.count(text.substr(0, text.find('='))) == 0) {
      all.push_back(text);
    }
  }
  for (const auto& [name, value] : additions) {
    all.push_back(name + "=" + value);
  }
  return all;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

struct ChildProcess::State {
  [[nodiscard]] std::filesystem::path Folder() const { return std::filesystem::path("/proc") / std::to_string(id); }

  pid_t id = -1;
  int input = -1;
  int output = -1;
  std::string unread;
  std::optional<int> result;
};

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment)
    : state_(std::make_unique<State>()) {
  // A write to a child that died is an answer, not the end of the test.
  signal(SIGPIPE, SIG_IGN);
  const auto [child_input, input] = MakePipe();
  const auto [output, child_output] = MakePipe();
  posix_spawn_file_actions_t actions{};
  Check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
  Check(posix_spawn_file_actions_adddup2(&actions, child_input, STDIN_FILENO), "adddup2");
  Check(posix_spawn_file_actions_adddup2(&actions, child_output, STDOUT_FILENO), "adddup2");
  std::vector<std::string> arguments = command;
  std::vector<std::string> variables = Environment(environment);
  const int code = posix_spawn(&state_->id, command.front().c_str(), &actions, nullptr, Pointers(arguments).data(),
                               Pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  close(child_input);
  close(child_output);
  state_->input = input;
  state_->output = output;
  Check(code, command.front().c_str());
}

ChildProcess::~ChildProcess() {
  EndInput();
  Kill();
  Wait();
  close(state_->output);
}

void ChildProcess::Send(const std::string& line) {
  const std::string text = line + "\n";
  if (write(state_->input, text.data(), text.size()) < 0 && errno != EPIPE) {
    Check(errno, "write");
  }
}

void ChildProcess::EndInput() {
  if (state_->input >= 0) {
    close(state_->input);
    state_->input = -1;
  }
}

std::optional<std::string> ChildProcess::ReadLine() {
  std::array<char, 4096> buffer{};
  while (state_->unread.find('\n') == std::string::npos) {
    const ssize_t size = read(state_->output, buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size <= 0) {
      return std::nullopt;
    }
    state_->unread.append(buffer.data(), static_cast<std::size_t>(size));
  }
  const std::size_t end = state_->unread.find('\n');
  const std::string line = state_->unread.substr(0, end);
  state_->unread.erase(0, end + 1);
  return line;
}

void ChildProcess::Kill() {
  if (!state_->result) {
    kill(state_->id, SIGKILL);
  }
}

int ChildProcess::Wait() {
  while (!state_->result) {
    int status = 0;
    if (waitpid(state_->id, &status, 0) == state_->id) {
      state_->result = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    } else {
      Check(errno == EINTR ? 0 : errno, "waitpid");
    }
  }
  return *state_->result;
}

std::int64_t ChildProcess::OpenFiles() const {
  return std::distance(std::filesystem::directory_iterator(state_->Folder() / "fd"),
                       std::filesystem::directory_iterator());
}

std::int64_t ChildProcess::ResidentBytes() const {
  std::int64_t total_pages = 0;
  std::int64_t resident_pages = 0;
  std::ifstream(state_->Folder() / "statm") >> total_pages >> resident_pages;
  return resident_pages * sysconf(_SC_PAGESIZE);
}

}  // namespace corvo::test
