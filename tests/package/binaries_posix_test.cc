#include <gmock/gmock.h>

#include "package/elf_file_posix.h"

namespace corvo::test {
namespace {

using testing::ContainsRegex;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

struct NamedFile {
  const char* name;
  const char* file;
};

std::ostream& operator<<(std::ostream& stream, const NamedFile& file) { return stream << file.name; }

const NamedFile kModule{"Module", CORVO_MODULE};
const NamedFile kCommons{"Commons", CORVO_COMMONS};
const NamedFile kDataContracts{"DataContracts", CORVO_DATA_CONTRACTS};
const NamedFile kStorage{"Storage", CORVO_STORAGE};

// A test of several binaries.
class BinaryTest : public testing::TestWithParam<NamedFile> {
 protected:
  [[nodiscard]] static std::string File() { return GetParam().file; }
};

TEST(Module, ExportsOneFunctionUnderTwoNames) {
  EXPECT_THAT(ExportedNames(CORVO_MODULE),
              UnorderedElementsAre("LoadPlugin", "corvo::telemetry::plugin::datacleanupplugin::LoadPlugin()"));

  const std::vector<ExportedSymbol> symbols = ExportedSymbols(CORVO_MODULE);
  ASSERT_EQ(symbols.size(), 2u);
  EXPECT_EQ(symbols[0].address, symbols[1].address);
}

TEST(Module, CanBeUnloadedBecauseItExportsNothingUniqueInTheProcess) {
  EXPECT_THAT(ExportedSymbols(CORVO_MODULE), Each(testing::Field(&ExportedSymbol::type, 'T')));
  EXPECT_THAT(DynamicSection(CORVO_MODULE), Not(HasSubstr("NODELETE")));
}

TEST(DataContracts, StayInTheProcessWhenTheModuleIsUnloaded) {
  EXPECT_THAT(DynamicSection(CORVO_DATA_CONTRACTS), ContainsRegex("FLAGS_1.*NODELETE"));
}

TEST(Commons, ExportsTheseFunctionsAndNoOther) {
  EXPECT_THAT(
      ExportedFunctions(CORVO_COMMONS, "corvo::telemetry::common::"),
      UnorderedElementsAre("DefaultLogger", "Error::Error", "Error::operator=", "Error::~Error", "ErrorText",
                           "ErrorToJson", "FormatUtcTime", "InitDefaultLogger", "LogSink::LogSink", "LogSink::~LogSink",
                           "MakeErrorFromException", "PathFromUtf8", "ReplaceZone", "TelemetryCollectorBase::Collect",
                           "TelemetryCollectorBase::Configure", "TelemetryCollectorBase::Execute",
                           "TelemetryCollectorBase::Finalize", "TelemetryCollectorBase::TelemetryCollectorBase",
                           "TelemetryCollectorBase::~TelemetryCollectorBase", "Utf8", "ValidUtf8"));
  EXPECT_THAT(ExportedFunctions(CORVO_COMMONS, "corvo::shared::"),
              UnorderedElementsAre("plugin::IPluginModule::~IPluginModule",
                                   "plugin::PluginBufferAllocator::~PluginBufferAllocator"));
}

TEST(Storage, ExportsTheseFunctionsAndNoOther) {
  std::set<std::string> functions = ExportedFunctions(CORVO_STORAGE, "corvo::shared::");
  // The classes' private parts follow the visibility of their classes.
  std::erase_if(functions, [](const std::string& name) { return name.find("::State::") != std::string::npos; });
  EXPECT_THAT(
      functions,
      UnorderedElementsAre(
          "AllowStatements", "GetDataDirectory", "GetStatementObserver", "GetStorageOptions", "ICommand::~ICommand",
          "InterruptStatements", "IsBusy", "IsCannotOpen", "IsDamaged", "IsFull", "IsInterrupted", "IsIoError",
          "IsMissingTable", "IsOutOfMemory", "IsReadOnly", "IsRefused", "IsTooBig", "SetDataDirectory",
          "SetStatementObserver", "SetStorageOptions", "SqlCommand::Execute", "SqlCommand::GetLastError",
          "SqlCommand::GetResults", "SqlCommand::GetSqlStatement", "SqlCommand::HasNext", "SqlCommand::Next",
          "SqlCommand::Run", "SqlCommand::SqlCommand", "SqlCommand::~SqlCommand",
          "StatementObserver::MayLeaveOutCompaction", "StatementObserver::OnProgress", "StatementObserver::OnStart",
          "StatementsInterrupted", "StatementObserver::~StatementObserver",
          "StatementObserverScope::StatementObserverScope", "StatementObserverScope::~StatementObserverScope",
          "StorageOptionsScope::StorageOptionsScope", "StorageOptionsScope::~StorageOptionsScope",
          "TelemetryStorage::CopyTo", "TelemetryStorage::Execute", "TelemetryStorage::GetDataBaseName",
          "TelemetryStorage::GetDataBasePath", "TelemetryStorage::GetLastError", "TelemetryStorage::TelemetryStorage",
          "TelemetryStorage::~TelemetryStorage"));
}

class OwnLibrary : public BinaryTest {};

TEST_P(OwnLibrary, KeepsItsThirdPartyCodeToItself) {
  EXPECT_THAT(ExportedNames(File()), Each(Not(ContainsRegex("nlohmann|sqlite3|fmt::"))));
}

INSTANTIATE_TEST_SUITE_P(Libraries, OwnLibrary, testing::Values(kCommons, kStorage));

class Binary : public BinaryTest {};

TEST_P(Binary, LeavesNoSymbolUnresolved) {
  EXPECT_THAT(BindEverything(File()), Not(ContainsRegex("undefined symbol|not found")));
}

TEST_P(Binary, IsBoundAtLoadTimeAndReadOnlyAfterwards) {
  EXPECT_THAT(DynamicSection(File()), ContainsRegex("FLAGS_1.*NOW"));
  EXPECT_THAT(ProgramHeaders(File()), HasSubstr("GNU_RELRO"));
}

TEST_P(Binary, HasAStackThatIsNotExecutable) { EXPECT_THAT(ProgramHeaders(File()), ContainsRegex("GNU_STACK.* RW ")); }

TEST_P(Binary, LooksForItsLibrariesBesideItselfAndNowhereElse) {
  EXPECT_THAT(DynamicSection(File()), ContainsRegex("\\((RUNPATH|RPATH)\\).*: \\[\\$ORIGIN\\]"));
}

INSTANTIATE_TEST_SUITE_P(EachOne, Binary, testing::Values(kModule, kCommons, kDataContracts, kStorage));

}  // namespace
}  // namespace corvo::test
