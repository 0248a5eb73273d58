#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>

#include "host/run_fixture.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class ReportPlace : public RunTest {
 protected:
  void SetUp() override { fs::create_directory(data_); }

  [[nodiscard]] HostRun Write(const std::string& file) const {
    return RunHost({"report", "--data-dir", data_, "--html", file});
  }

  void ExpectRefusal(const std::string& file, const char* reason) const {
    const HostRun run = Write(file);
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_THAT(run.err, HasSubstr(reason));
  }

  std::string page_ = folder_ / "page.html";
};

TEST_F(ReportPlace, IsNoPipeAndNoDevice) {
  ASSERT_EQ(mkfifo(page_.c_str(), 0600), 0);
  ExpectRefusal(page_, "it is no ordinary file");
  ExpectRefusal("/dev/null", "it is no ordinary file");
}

TEST_F(ReportPlace, IsNoLinkWhereverItLeads) {
  const std::string target = folder_ / "target";
  std::ofstream(target) << "kept";
  for (const char* name : {"target", "nowhere"}) {
    fs::create_symlink(folder_ / name, page_);
    ExpectRefusal(page_, "it is a link");
    fs::remove(page_);
  }
  EXPECT_EQ(fs::file_size(target), 4U);
}

TEST_F(ReportPlace, LeavesTheOtherNameOfAHardLink) {
  const std::string other = folder_ / "other";
  std::ofstream(other) << "kept";
  fs::create_hard_link(other, page_);
  EXPECT_EQ(Write(page_).exit_code, 0);
  EXPECT_EQ(fs::file_size(other), 4U);
  EXPECT_GT(fs::file_size(page_), 4U);
}

TEST_F(ReportPlace, IsLeftAsItWasWhenThePageCannotBeWritten) {
  std::ofstream(page_) << "former";
  // The files of a build that measures coverage would be cut off as well.
  const HostRun run = RunHostThrough(
      {"env", "GCOV_PREFIX=/dev/null", "GCOV_ERROR_FILE=/dev/null", "sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""},
      {"report", "--data-dir", data_, "--html", page_});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("cannot write the page"));
  EXPECT_EQ(fs::file_size(page_), 6U);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()), 2);
}

}  // namespace
}  // namespace corvo::test
