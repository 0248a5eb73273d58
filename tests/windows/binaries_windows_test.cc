#include <gmock/gmock.h>

#include "support/patterns.h"
#include "windows/pe_file_windows.h"

namespace corvo::test {
namespace {

using testing::Field;
using testing::UnorderedElementsAre;

TEST(Module, ExportsOneFunctionUnderTwoNames) {
  const std::vector<ExportedName> exports = PeFile(CORVO_DATA_CLEANUP).Exports();
  EXPECT_THAT(exports,
              UnorderedElementsAre(Field(&ExportedName::name, "LoadPlugin"),
                                   Field(&ExportedName::name, testing::HasSubstr("datacleanupplugin10LoadPlugin"))));
  ASSERT_EQ(exports.size(), 2U);
  EXPECT_EQ(exports[0].address, exports[1].address);
}

class Library : public testing::TestWithParam<const char*> {};

TEST_P(Library, KeepsItsThirdPartyCodeToItself) {
  for (const ExportedName& exported : PeFile(GetParam()).Exports()) {
    EXPECT_THAT(exported.name, testing::Not(ContainsPattern("nlohmann|sqlite3|3fmt"))) << exported.name;
  }
}

INSTANTIATE_TEST_SUITE_P(Libraries, Library, testing::Values(CORVO_COMMONS, CORVO_STORAGE));

class Binary : public testing::TestWithParam<const char*> {};

TEST_P(Binary, IsLoadedAtARandomAddressOfTheWholeAddressSpace) {
  const WORD characteristics = PeFile(GetParam()).Characteristics();
  EXPECT_NE(characteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE, 0);
  EXPECT_NE(characteristics & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA, 0);
}

TEST_P(Binary, ExecutesNoDataAndWritesNoCode) {
  const PeFile file(GetParam());
  EXPECT_NE(file.Characteristics() & IMAGE_DLLCHARACTERISTICS_NX_COMPAT, 0);
  constexpr DWORD kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
  for (const IMAGE_SECTION_HEADER& section : file.Sections()) {
    EXPECT_NE(section.Characteristics & kBoth, kBoth);
  }
}

TEST_P(Binary, TellsItsVersionAndName) {
  EXPECT_EQ(VersionText(GetParam(), "FileVersion"), CORVO_VERSION);
  EXPECT_EQ(VersionText(GetParam(), "ProductVersion"), CORVO_VERSION);
  const std::string file = GetParam();
  EXPECT_EQ(VersionText(GetParam(), "OriginalFilename"), file.substr(file.find_last_of("/\\") + 1));
}

INSTANTIATE_TEST_SUITE_P(EachOne, Binary,
                         testing::Values(CORVO_DATA_CLEANUP, CORVO_HOST, CORVO_COMMONS, CORVO_DATA_CONTRACTS,
                                         CORVO_STORAGE));

}  // namespace
}  // namespace corvo::test
