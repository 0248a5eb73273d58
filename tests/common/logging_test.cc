#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plog/Log.h>

#include <stdexcept>

#include "common/log.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using telemetry::common::DefaultLogger;
using telemetry::common::Error;
using telemetry::common::ErrorText;
using telemetry::common::InitDefaultLogger;
using telemetry::common::LogAdmits;
using testing::ElementsAre;

class LogSeverity : public testing::TestWithParam<int> {};

TEST_P(LogSeverity, AdmitsRecordsUpToTheMaximum) {
  const auto severity = static_cast<plog::Severity>(GetParam());
  for (int maximum = plog::none; maximum <= plog::verbose; ++maximum) {
    const LogCapture log(static_cast<plog::Severity>(maximum));
    CORVO_LOG(severity, "Tag") << "text";
    EXPECT_EQ(LogAdmits(severity), GetParam() <= maximum);
    EXPECT_EQ(log.Lines().size(), GetParam() <= maximum ? 1U : 0U) << "maximum " << maximum;
  }
}

INSTANTIATE_TEST_SUITE_P(, LogSeverity, testing::Range(1, 7));

TEST(Log, NumbersSeveritiesFromFatal1ToVerbose6) {
  EXPECT_EQ(int{plog::fatal}, 1);
  EXPECT_EQ(int{plog::error}, 2);
  EXPECT_EQ(int{plog::warning}, 3);
  EXPECT_EQ(int{plog::info}, 4);
  EXPECT_EQ(int{plog::debug}, 5);
  EXPECT_EQ(int{plog::verbose}, 6);
}

TEST(Log, EvaluatesNothingOfARecordThatIsNotAdmitted) {
  const LogCapture log(plog::info);
  int evaluated = 0;
  const auto count = [&evaluated] { return ++evaluated; };
  CORVO_LOG(plog::debug, "Tag") << count();
  EXPECT_EQ(evaluated, 0);
  CORVO_LOG(plog::info, "Tag") << count();
  EXPECT_EQ(evaluated, 1);
}

TEST(Log, WritesSeverityTagAndText) {
  const LogCapture log;
  CORVO_LOG(plog::warning, "corvo::Some::Function") << "count " << 3 << std::string(" rows");
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::warning, "corvo::Some::Function", "count 3 rows"}));
}

TEST(Log, RecordHasNoFileNameButLineThreadAndTime) {
  LogCapture log;
  int seen = 0;
  plog::util::Time before{};
  plog::util::ftime(&before);
  log.OnRecord([&](const plog::Record& record) {
    ++seen;
    EXPECT_STREQ(record.getFile(), "");
    EXPECT_GT(record.getLine(), 0U);
    EXPECT_EQ(record.getTid(), plog::util::gettid());
    EXPECT_GE(record.getTime().time, before.time);
    EXPECT_EQ(record.getInstanceId(), 0);
  });
  CORVO_LOG(plog::info, "Tag") << "text";
  EXPECT_EQ(seen, 1);
}

TEST(Log, RecordHasTheLineOfTheStatement) {
  LogCapture log;
  std::size_t line = 0;
  log.OnRecord([&line](const plog::Record& record) { line = record.getLine(); });
  const std::size_t expected = __LINE__ + 1;
  CORVO_LOG(plog::info, "Tag") << "text";
  EXPECT_EQ(line, expected);
}

TEST(Log, StreamsAnErrorAsItsJsonText) {
  const LogCapture log;
  const Error error(std::runtime_error("broken"));
  CORVO_LOG(plog::error, "Tag") << "before " << error << " after";
  EXPECT_THAT(log.Texts(plog::error), ElementsAre("before " + ErrorText(error) + " after"));
}

TEST(Log, StreamsAnErrorWithoutJsonTextAsNull) {
  const LogCapture log;
  CORVO_LOG(plog::error, "Tag") << Error(std::runtime_error("caf\xE9"));
  EXPECT_THAT(log.Texts(plog::error), ElementsAre("(null)"));
}

TEST(Log, StatementIsOneStatementOfAnIf) {
  const LogCapture log;
  bool other = false;
  // Without braces on purpose: the macro must not take the else.
  if (log.Lines().empty())
    CORVO_LOG(plog::info, "Tag") << "taken";
  else
    other = true;
  EXPECT_FALSE(other);
  EXPECT_THAT(log.Texts(plog::info), ElementsAre("taken"));
}

TEST(Log, ProgramAndLibraryShareOneLogger) {
  const LogCapture log;
  EXPECT_EQ(plog::get(), DefaultLogger());
  EXPECT_EQ(plog::get<PLOG_DEFAULT_INSTANCE_ID>(), DefaultLogger());
  PLOG_INFO << "from the host";
  EXPECT_THAT(log.Texts(plog::info), ElementsAre("from the host"));
}

/// Notes its number for every record.
class Numbered : public plog::IAppender {
 public:
  Numbered(int number, std::vector<int>& calls) : number_(number), calls_(calls) {}
  void write(const plog::Record& /*record*/) override { calls_.push_back(number_); }

 private:
  int number_;
  std::vector<int>& calls_;
};

TEST(Log, InitialisingTwiceKeepsTheLoggerAndAddsTheAppenderBehindTheOthers) {
  // The logger keeps its appenders for good.
  static std::vector<int> calls;
  static Numbered first(1, calls);
  static Numbered second(2, calls);
  const LogCapture log(plog::info);
  auto& logger = InitDefaultLogger(plog::verbose, &first);
  EXPECT_EQ(&InitDefaultLogger(plog::verbose, &second), &logger);
  EXPECT_EQ(&InitDefaultLogger(plog::verbose, nullptr), &logger);
  EXPECT_EQ(logger.getMaxSeverity(), plog::info) << "only the first call sets it";
  CORVO_LOG(plog::info, "Tag") << "text";
  EXPECT_THAT(calls, ElementsAre(1, 2));
  EXPECT_EQ(log.Lines().size(), 1U);
}

// A host hands over the logger that it has: where that is this one, adding it would write every record without end.
TEST(Log, InitialisingWithTheLoggerItselfDoesNotAddIt) {
  const LogCapture log;
  InitDefaultLogger(plog::verbose, plog::get());
  CORVO_LOG(plog::info, "Tag") << "text";
  EXPECT_EQ(log.Lines().size(), 1U);
}

/// Keeps what a host without plog is told.
class KeepingSink : public telemetry::common::LogSink {
 public:
  void Write(const telemetry::common::LogRecord& record) noexcept override {
    severity = record.severity;
    texts.push_back(std::string(record.tag) + ": " + record.text);
  }

  telemetry::common::LogSeverity severity = telemetry::common::LogSeverity::kNone;
  std::vector<std::string> texts;
};

TEST(LogSink, GetsSeverityTagAndTextOfEveryAdmittedRecord) {
  // The logger keeps what writes to it for good.
  static KeepingSink sink;
  InitDefaultLogger(telemetry::common::LogSeverity::kInfo, &sink);
  InitDefaultLogger(telemetry::common::LogSeverity::kInfo, nullptr);
  const LogCapture log(plog::info);

  CORVO_LOG(plog::warning, "corvo::Function") << "caf\xC3\xA9 " << 3;
  CORVO_LOG(plog::debug, "corvo::Function") << "above the maximum";

  EXPECT_THAT(sink.texts, ElementsAre("corvo::Function: caf\xC3\xA9 3"));
  EXPECT_EQ(sink.severity, telemetry::common::LogSeverity::kWarning);
}

}  // namespace
}  // namespace corvo::test
