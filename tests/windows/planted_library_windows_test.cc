#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/process_windows.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

/// Libraries that stop every program that loads them, under the names of those that the host and the module need.
void PlantLibraries(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(fs::path(CORVO_HOST).parent_path())) {
    if (entry.path().extension() == ".dll") {
      std::ofstream(folder / entry.path().filename()) << "no library";
    }
  }
}

int RunHostIn(const fs::path& current_directory, const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {fs::absolute(CORVO_HOST).make_preferred().string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  const Handle nothing(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   &inheritable, OPEN_EXISTING, 0, nullptr));
  const fs::path former = fs::current_path();
  fs::current_path(current_directory);
  const Handle process = StartProcess(command, {}, {nothing.Get(), nothing.Get(), nothing.Get()});
  fs::current_path(former);
  return WaitForExit(process);
}

TEST(PlantedLibrary, InTheCurrentDirectoryIsLoadedByNeitherTheHostNorTheModule) {
  const TempDir planted;
  const TempDir data;
  PlantLibraries(planted.Path());
  ASSERT_TRUE(fs::exists(planted.Path() / "corvo-telemetry-storage.dll"));
  ASSERT_EQ(LoadLibraryW((planted.Path() / "corvo-telemetry-storage.dll").c_str()), nullptr);

  EXPECT_EQ(RunHostIn(planted.Path(), {"generate", "--data-dir", data.Path().string(), "--force", "--scale", "0.01"}),
            0);
  EXPECT_EQ(RunHostIn(planted.Path(), {"run", "--data-dir", data.Path().string()}), 0);
}

// The module is named by its file alone: it must be taken from that folder and its libraries from beside it.
TEST(PlantedLibrary, InTheModulesPlaceIsRefusedAndNotSearchedForElsewhere) {
  const TempDir planted;
  const TempDir data;
  PlantLibraries(planted.Path());
  ASSERT_EQ(RunHostIn(planted.Path(), {"generate", "--data-dir", data.Path().string(), "--force", "--scale", "0.01"}),
            0);

  constexpr int kModuleNotLoadable = 12;
  EXPECT_EQ(RunHostIn(planted.Path(),
                      {"run", "--data-dir", data.Path().string(), "--plugin", "corvo-telemetry-data-cleanup.dll"}),
            kModuleNotLoadable);
}

}  // namespace
}  // namespace corvo::test
