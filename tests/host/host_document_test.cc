#include "host/host_document.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "host/host_process.h"
#include "host/report_samples.h"
#include "host/show/run/run_json.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using nlohmann::json;

TEST(DocumentSchema, FitsARunAndARunThatDidNotBegin) {
  telemetry::common::Error error;
  error.category = telemetry::common::EC_WinApi;
  error.code = -1;
  error.origin = "here";
  EXPECT_NO_THROW(static_cast<void>(ParseHostDocument(telemetry::host::RunDocument(SampleReport()))));
  EXPECT_NO_THROW(static_cast<void>(ParseHostDocument(telemetry::host::RunDocument(error))));
}

TEST(DocumentSchema, OfAVersionOrAHelpIsThatOfATextForPeople) {
  EXPECT_EQ(RunHost({"--version", "--json"}).Json().size(), 2U);
  EXPECT_EQ(RunHost({"--json", "--help"}).Json().size(), 2U);
}

TEST(DocumentSchema, IsNoneForADocumentOfNoKnownKind) {
  EXPECT_THROW(static_cast<void>(ParseHostDocument(R"({"schema_version": 1})")), std::runtime_error);
  EXPECT_THROW(static_cast<void>(ParseHostDocument("[]")), std::runtime_error);
}

class DocumentSchemaOf : public testing::TestWithParam<const char*> {
 protected:
  [[nodiscard]] static json Document() {
    const TempDir folder;
    std::vector<std::string> words = {GetParam(), "--json"};
    if (words[0] != "contracts") {
      words.insert(words.end(), {"--data-dir", folder.Path().string()});
    }
    return RunHost(words).Json();
  }
};

TEST_P(DocumentSchemaOf, MissesEveryMemberThatIsLeftOut) {
  const json document = Document();
  for (const auto& [name, member] : document.items()) {
    json shorter = document;
    shorter.erase(name);
    EXPECT_THROW(static_cast<void>(ParseHostDocument(shorter.dump())), std::runtime_error) << name;
  }
}

TEST_P(DocumentSchemaOf, RefusesEveryMemberOfAnotherType) {
  const json document = Document();
  for (const auto& [name, member] : document.items()) {
    json other = document;
    other[name] = member.is_boolean() ? json("true") : json(true);
    EXPECT_THROW(static_cast<void>(ParseHostDocument(other.dump())), std::runtime_error) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Commands, DocumentSchemaOf, testing::Values("run", "generate", "contracts"));

}  // namespace
}  // namespace corvo::test
