#include "host/command_line.h"

int main(int argc, char** argv) { return corvo::telemetry::host::RunCommandLine(argc, argv); }
