#include <fstream>
#include <sstream>

#include "host/host_process.h"
#include "support/process_windows.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

Handle Open(const std::string& file, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return Handle(CreateFileW(Wide(file).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, disposition,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string Content(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

int Run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment, const Handle& out,
        const Handle& err) {
  std::vector<std::string> command = {CORVO_HOST_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const Handle in = Open("NUL", GENERIC_READ, OPEN_EXISTING);
  return WaitForExit(StartProcess(command, environment, {in.Get(), out.Get(), err.Get()}));
}

}  // namespace

HostRun RunHost(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  const TempDir folder;
  int exit_code = 0;
  {
    const Handle out = Open(folder / "out", GENERIC_WRITE, CREATE_ALWAYS);
    const Handle err = Open(folder / "err", GENERIC_WRITE, CREATE_ALWAYS);
    exit_code = Run(arguments, environment, out, err);
  }
  return {exit_code, Content(folder / "out"), Content(folder / "err")};
}

// A handle that may only read refuses every write, as a full disk does.
HostRun RunHostOnFullDisk(const std::vector<std::string>& arguments) {
  const TempDir folder;
  int exit_code = 0;
  {
    const Handle out = Open(folder / "out", GENERIC_READ, CREATE_ALWAYS);
    const Handle err = Open(folder / "err", GENERIC_WRITE, CREATE_ALWAYS);
    exit_code = Run(arguments, {}, out, err);
  }
  return {exit_code, "", Content(folder / "err")};
}

HostRun RunHostThrough(const std::vector<std::string>& /*through*/, const std::vector<std::string>& arguments) {
  return RunHost(arguments);
}

HostRun RunHostMute(const std::vector<std::string>& arguments) {
  const TempDir folder;
  const Handle out = Open(folder / "out", GENERIC_READ, CREATE_ALWAYS);
  const Handle err = Open(folder / "err", GENERIC_READ, CREATE_ALWAYS);
  return {Run(arguments, {}, out, err), "", ""};
}

}  // namespace corvo::test
