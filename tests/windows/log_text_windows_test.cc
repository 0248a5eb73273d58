#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/log.h"

namespace corvo::test {
namespace {

class WideAppender : public plog::IAppender {
 public:
  void write(const plog::Record& record) override { texts.emplace_back(record.getMessage()); }

  std::vector<std::wstring> texts;
};

// This program's narrow encoding is UTF-8, as the host's is.
TEST(LogText, IsConvertedFromTheNarrowEncodingToUtf16) {
  static WideAppender appender;
  telemetry::common::InitDefaultLogger(plog::verbose, &appender);
  CORVO_LOG(plog::info, "Tag") << "Ger\xC3\xA4t " << std::string("\xD0\x96 \xE6\x97\xA5\xF0\x9F\x98\x80");
  telemetry::common::Error error;
  error.code = 1;
  error.what = "\xC3\xA4";
  CORVO_LOG(plog::error, "Tag") << error;
  ASSERT_EQ(appender.texts.size(), 2U);
  EXPECT_EQ(appender.texts[0], L"Ger\u00E4t \u0416 \u65E5\xD83D\xDE00");
  EXPECT_NE(appender.texts[1].find(L"\"what\":\"\u00E4\""), std::wstring::npos);
}

}  // namespace
}  // namespace corvo::test
