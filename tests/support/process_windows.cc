#include "support/process_windows.h"

#include <array>
#include <map>
#include <memory>
#include <system_error>

namespace corvo::test {
namespace {

void Check(bool success, const std::string& what) {
  if (!success) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
  }
}

/// The argument as the C runtime of the new process takes it apart again.
std::wstring Quoted(const std::wstring& argument) {
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') {
      text.append(backslashes + 1, L'\\');
    }
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text.push_back(c);
  }
  return text.append(backslashes, L'\\') + L"\"";
}

std::wstring CommandLine(const std::vector<std::string>& command) {
  std::wstring line;
  for (const std::string& word : command) {
    line += (line.empty() ? L"" : L" ") + Quoted(Wide(word));
  }
  return line;
}

std::wstring Upper(std::wstring name) {
  CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
  return name;
}

std::wstring EnvironmentBlock(const std::vector<std::string>& added) {
  std::map<std::wstring, std::wstring> variables;
  const auto set = [&variables](const std::wstring& entry) {
    // Entries of the system's own begin with the sign.
    variables[Upper(entry.substr(0, entry.find(L'=', 1)))] = entry;
  };
  const std::unique_ptr<wchar_t, decltype(&FreeEnvironmentStringsW)> own(GetEnvironmentStringsW(),
                                                                         &FreeEnvironmentStringsW);
  for (const wchar_t* entry = own.get(); *entry != L'\0'; entry += std::wstring(entry).size() + 1) {
    set(entry);
  }
  for (const std::string& entry : added) {
    set(Wide(entry));
  }
  std::wstring block;
  for (const auto& [name, entry] : variables) {
    block += entry + L'\0';
  }
  return block + L'\0';
}

/// Names the handles that a new process inherits, so that it gets no other that happens to be open.
class InheritedHandles {
 public:
  explicit InheritedHandles(const StandardStreams& streams) : handles_{streams.in, streams.out, streams.err} {
    const std::size_t count = streams.out == streams.err ? 2 : 3;
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_.resize(size);
    Check(InitializeProcThreadAttributeList(List(), 1, 0, &size) != 0, "InitializeProcThreadAttributeList");
    Check(UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                    count * sizeof(HANDLE), nullptr, nullptr) != 0,
          "UpdateProcThreadAttribute");
  }
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;
  ~InheritedHandles() { DeleteProcThreadAttributeList(List()); }

  LPPROC_THREAD_ATTRIBUTE_LIST List() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data()); }

 private:
  std::array<HANDLE, 3> handles_;
  std::vector<char> memory_;
};

}  // namespace

std::wstring Wide(const std::string& utf8) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), size);
  return wide;
}

Handle StartProcess(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                    const StandardStreams& streams, DWORD* id) {
  InheritedHandles inherited(streams);
  STARTUPINFOEXW start{};
  start.StartupInfo.cb = sizeof start;
  start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  start.StartupInfo.hStdInput = streams.in;
  start.StartupInfo.hStdOutput = streams.out;
  start.StartupInfo.hStdError = streams.err;
  start.lpAttributeList = inherited.List();
  std::wstring line = CommandLine(command);
  std::wstring block = EnvironmentBlock(environment);
  PROCESS_INFORMATION process{};
  Check(CreateProcessW(Wide(command.front()).c_str(), line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT, block.data(), nullptr,
                       &start.StartupInfo, &process) != 0,
        command.front());
  CloseHandle(process.hThread);
  if (id != nullptr) {
    *id = process.dwProcessId;
  }
  return Handle(process.hProcess);
}

int WaitForExit(const Handle& process) {
  Check(WaitForSingleObject(process.Get(), INFINITE) == WAIT_OBJECT_0, "WaitForSingleObject");
  DWORD code = 0;
  Check(GetExitCodeProcess(process.Get(), &code) != 0, "GetExitCodeProcess");
  return static_cast<int>(code);
}

}  // namespace corvo::test
