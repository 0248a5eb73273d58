#include "host/cli/command_line.h"
#include "host/platform/platform.h"

int main(int argc, char** argv) {
  corvo::telemetry::host::PrepareProcess();
  return corvo::telemetry::host::RunCommandLine(argc, argv);
}
