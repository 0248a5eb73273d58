#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
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

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment) {
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
  const int code = posix_spawn(&id_, command.front().c_str(), &actions, nullptr, Pointers(arguments).data(),
                               Pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  close(child_input);
  close(child_output);
  input_ = input;
  output_ = output;
  Check(code, command.front().c_str());
}

ChildProcess::~ChildProcess() {
  EndInput();
  Kill();
  Wait();
  close(output_);
}

void ChildProcess::Send(const std::string& line) {
  const std::string text = line + "\n";
  if (write(input_, text.data(), text.size()) < 0 && errno != EPIPE) {
    Check(errno, "write");
  }
}

void ChildProcess::EndInput() {
  if (input_ >= 0) {
    close(input_);
    input_ = -1;
  }
}

std::optional<std::string> ChildProcess::ReadLine() {
  std::array<char, 4096> buffer{};
  while (unread_.find('\n') == std::string::npos) {
    const ssize_t size = read(output_, buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size <= 0) {
      return std::nullopt;
    }
    unread_.append(buffer.data(), static_cast<std::size_t>(size));
  }
  const std::size_t end = unread_.find('\n');
  const std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

void ChildProcess::Kill() {
  if (!result_) {
    kill(id_, SIGKILL);
  }
}

int ChildProcess::Wait() {
  while (!result_) {
    int status = 0;
    if (waitpid(id_, &status, 0) == id_) {
      result_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    } else {
      Check(errno == EINTR ? 0 : errno, "waitpid");
    }
  }
  return *result_;
}

}  // namespace corvo::test
