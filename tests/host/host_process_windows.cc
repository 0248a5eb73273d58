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

}  // namespace

HostRun RunHost(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  const TempDir folder;
  std::vector<std::string> command = {CORVO_HOST_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  int exit_code = 0;
  {
    const Handle in = Open("NUL", GENERIC_READ, OPEN_EXISTING);
    const Handle out = Open(folder / "out", GENERIC_WRITE, CREATE_ALWAYS);
    const Handle err = Open(folder / "err", GENERIC_WRITE, CREATE_ALWAYS);
    exit_code = WaitForExit(StartProcess(command, environment, {in.Get(), out.Get(), err.Get()}));
  }
  return {exit_code, Content(folder / "out"), Content(folder / "err")};
}

}  // namespace corvo::test
