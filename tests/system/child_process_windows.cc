#include <array>
#include <system_error>

#include "support/process_windows.h"
#include "system/child_process.h"

namespace corvo::test {
namespace {

void Check(bool success, const char* what) {
  if (!success) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
  }
}

struct Pipe {
  Handle reader;
  Handle writer;
};

Pipe MakePipe() {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  Check(CreatePipe(&reader, &writer, &inheritable, 0) != 0, "CreatePipe");
  return {Handle(reader), Handle(writer)};
}

Handle OwnStandardError() {
  HANDLE copy = nullptr;
  Check(DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_ERROR_HANDLE), GetCurrentProcess(), &copy, 0, TRUE,
                        DUPLICATE_SAME_ACCESS) != 0,
        "DuplicateHandle");
  return Handle(copy);
}

constexpr UINT kKilled = static_cast<UINT>(-1);

}  // namespace

struct ChildProcess::State {
  Handle process;
  Handle input;
  Handle output;
  std::string unread;
};

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::map<std::string, std::string>& environment)
    : state_(std::make_unique<State>()) {
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment) {
    variables.push_back(name + "=" + value);
  }
  Pipe input = MakePipe();
  Pipe output = MakePipe();
  const Handle error = OwnStandardError();
  state_->process = StartProcess(command, variables, {input.reader.Get(), output.writer.Get(), error.Get()});
  state_->input = std::move(input.writer);
  state_->output = std::move(output.reader);
}

ChildProcess::~ChildProcess() {
  EndInput();
  Kill();
  Wait();
}

void ChildProcess::Send(const std::string& line) {
  const std::string text = line + "\n";
  DWORD written = 0;
  // Fails when the child is gone.
  WriteFile(state_->input.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void ChildProcess::EndInput() { state_->input.Close(); }

std::optional<std::string> ChildProcess::ReadLine() {
  std::array<char, 4096> buffer{};
  while (state_->unread.find('\n') == std::string::npos) {
    DWORD size = 0;
    if (ReadFile(state_->output.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &size, nullptr) == 0) {
      return std::nullopt;
    }
    state_->unread.append(buffer.data(), size);
  }
  const std::size_t end = state_->unread.find('\n');
  std::string line = state_->unread.substr(0, end);
  state_->unread.erase(0, end + 1);
  if (line.ends_with('\r')) {
    line.pop_back();
  }
  return line;
}

// Does nothing to a child that has ended.
void ChildProcess::Kill() { TerminateProcess(state_->process.Get(), kKilled); }

int ChildProcess::Wait() { return WaitForExit(state_->process); }

std::int64_t ChildProcess::OpenFiles() const {
  DWORD count = 0;
  Check(GetProcessHandleCount(state_->process.Get(), &count) != 0, "GetProcessHandleCount");
  return count;
}

// What is committed: what of it is in RAM is the system's choice.
std::int64_t ChildProcess::ResidentBytes() const {
  std::int64_t bytes = 0;
  MEMORY_BASIC_INFORMATION region{};
  const char* address = nullptr;
  while (VirtualQueryEx(state_->process.Get(), address, &region, sizeof region) != 0) {
    bytes += region.State == MEM_COMMIT ? static_cast<std::int64_t>(region.RegionSize) : 0;
    address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
  }
  return bytes;
}

}  // namespace corvo::test
