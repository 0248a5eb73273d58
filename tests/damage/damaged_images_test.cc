// No pass over a damaged database may lose a row that could be read before, unless a rule names it.
//
// Each image is made from its number alone. CORVO_DAMAGE_IMAGES sets how many are tried (600 unless set), and
// CORVO_DAMAGE_FIRST the number of the first: one image again is CORVO_DAMAGE_FIRST=<number> CORVO_DAMAGE_IMAGES=1.
#include <cstdio>
#include <cstdlib>
#include <map>

#include "damage/damage_fixture.h"
#include "damage/experiment.h"
#include "damage/time_budget.h"

namespace corvo::test {
namespace {

using std::chrono::seconds;

std::uint64_t Setting(const char* name, std::uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Images by kind of damage and by what became of them.
class Summary {
 public:
  void Add(const std::string& kind, const Outcome& outcome) {
    for (Counts* counts : {&kinds_[kind], &all_}) {
      ++counts->images;
      ++counts->ends[static_cast<std::size_t>(outcome.end)];
      counts->lost += outcome.lost.empty() ? 0 : 1;
    }
  }

  void Print() const {
    std::printf("%-22s %8s %8s %8s %8s %8s\n", "damage", "images", "cleaned", "refused", "failed", "lost");
    for (const auto& [kind, counts] : kinds_) {
      Print(kind, counts);
    }
    Print("all", all_);
  }

 private:
  struct Counts {
    int images = 0;
    int ends[3] = {};
    int lost = 0;
  };

  static void Print(const std::string& kind, const Counts& counts) {
    std::printf("%-22s %8d %8d %8d %8d %8d\n", kind.c_str(), counts.images, counts.ends[0], counts.ends[1],
                counts.ends[2], counts.lost);
  }

  std::map<std::string, Counts> kinds_;
  Counts all_;
};

std::string Report(std::uint64_t number, const DamagedImage& image, const Outcome& outcome) {
  std::string text = "image " + std::to_string(number) + ", base " + image.base->name + ", " + image.description +
                     "; result: " + (outcome.failure.empty() ? "success" : outcome.failure) + "; " +
                     std::to_string(outcome.lost.size()) + " rows lost:";
  for (std::size_t row = 0; row < outcome.lost.size() && row < 5; ++row) {
    text += " " + outcome.lost[row];
  }
  return text;
}

using DamagedImages = DamageTest;

TEST_F(DamagedImages, LoseNoReadableRowThatNoRuleNames) {
  const std::uint64_t first = Setting("CORVO_DAMAGE_FIRST", 1);
  const std::uint64_t count = Setting("CORVO_DAMAGE_IMAGES", 600);
  Summary summary;
  for (std::uint64_t number = first; number < first + count; ++number) {
    const DamagedImage image = MakeDamagedImage(number);
    const TimeBudget budget(seconds(60), "image " + std::to_string(number) + " takes for ever");
    const Outcome outcome = CleanDamaged(image, Folder() / std::to_string(number));
    summary.Add(image.kind, outcome);
    EXPECT_TRUE(outcome.lost.empty()) << Report(number, image, outcome);
  }
  summary.Print();
}

/// The experiment itself: an undamaged database loses what the rules name, and nothing else.
TEST_F(DamagedImages, AreMadeFromDatabasesThatAPassCleansWithSuccess) {
  for (const BaseDatabase& base : BaseDatabases()) {
    const Outcome outcome = CleanDamaged({&base, "none", "", base.image}, Folder() / base.name);

    EXPECT_EQ(outcome.end, Outcome::End::kCleaned) << base.name << ": " << outcome.failure;
    EXPECT_TRUE(outcome.lost.empty()) << base.name;
  }
}

TEST_F(DamagedImages, AreTheSameForTheSameNumber) {
  const DamagedImage one = MakeDamagedImage(17);
  const DamagedImage same = MakeDamagedImage(17);

  EXPECT_EQ(one.description, same.description);
  EXPECT_EQ(one.files.database, same.files.database);
  EXPECT_NE(one.files.database, MakeDamagedImage(18).files.database);
}

}  // namespace
}  // namespace corvo::test
