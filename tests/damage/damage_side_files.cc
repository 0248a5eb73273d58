// Damage to the write-ahead log and to a journal that is to be rolled back.
#include "damage/damage.h"

namespace corvo::test {
namespace {

constexpr std::size_t kLogHeader = 32;
constexpr std::size_t kFrameHeader = 24;

/// Checksums of a log, in the byte order that its magic number names.
class LogChecksum {
 public:
  explicit LogChecksum(const std::string& log) : big_endian_((ReadNumber(log, 0) & 1U) != 0) {}

  void Add(const std::string& log, std::size_t offset, std::size_t size) {
    for (std::size_t word = offset; word < offset + size; word += 8) {
      first_ += Word(log, word) + second_;
      second_ += Word(log, word + 4) + first_;
    }
  }

  void Store(std::string& log, std::size_t offset) const {
    WriteNumber(log, offset, first_);
    WriteNumber(log, offset + 4, second_);
  }

 private:
  [[nodiscard]] std::uint32_t Word(const std::string& log, std::size_t offset) const {
    const std::uint32_t word = ReadNumber(log, offset);
    return big_endian_ ? word : word << 24U | (word << 8U & 0xFF0000U) | (word >> 8U & 0xFF00U) | word >> 24U;
  }

  bool big_endian_;
  std::uint32_t first_ = 0;
  std::uint32_t second_ = 0;
};

/// Makes all checksums right, as if the log had been written with this content.
void Seal(std::string& log, std::size_t page_size) {
  LogChecksum checksum(log);
  checksum.Add(log, 0, 24);
  checksum.Store(log, 24);
  for (std::size_t frame = kLogHeader; frame + kFrameHeader + page_size <= log.size();
       frame += kFrameHeader + page_size) {
    checksum.Add(log, frame, 8);
    checksum.Add(log, frame + kFrameHeader, page_size);
    checksum.Store(log, frame + 16);
  }
}

std::optional<std::string> ChangeByte(std::string& bytes, std::size_t offset, Random& random) {
  bytes[offset] = static_cast<char>(static_cast<unsigned char>(bytes[offset]) ^ (1 + random.Below(255)));
  return "at byte " + std::to_string(offset);
}

std::optional<std::string> Log(const BaseDatabase& /*base*/, Image& image, Random& random) {
  if (image.log.empty()) {
    return std::nullopt;
  }
  return ChangeByte(image.log, random.Below(image.log.size()), random);
}

std::optional<std::string> LogHeader(const BaseDatabase& base, Image& image, Random& random) {
  if (image.log.size() <= kLogHeader + kFrameHeader + PageSize(base.image.database)) {
    return std::nullopt;
  }
  if (random.OneIn(3)) {
    return ChangeByte(image.log, random.Below(kLogHeader), random);
  }
  const std::size_t frame_size = kFrameHeader + PageSize(base.image.database);
  const std::size_t frame = random.Below((image.log.size() - kLogHeader) / frame_size);
  return ChangeByte(image.log, kLogHeader + frame * frame_size + random.Below(kFrameHeader), random);
}

/// The page was damaged before it reached the log, or the frame names another page.
std::optional<std::string> LoggedPage(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t page_size = PageSize(base.image.database);
  const std::size_t frames = image.log.size() / (page_size + kFrameHeader);
  if (frames == 0) {
    return std::nullopt;
  }
  const std::size_t frame = kLogHeader + random.Below(frames) * (page_size + kFrameHeader);
  const std::size_t in_page = random.OneIn(2) ? random.Below(60) : random.Below(page_size);
  const auto where = ChangeByte(image.log, random.OneIn(5) ? frame + 3 : frame + kFrameHeader + in_page, random);
  Seal(image.log, page_size);
  return where;
}

std::optional<std::string> CutLog(const BaseDatabase& /*base*/, Image& image, Random& random) {
  if (image.log.empty()) {
    return std::nullopt;
  }
  image.log.resize(random.Below(image.log.size()));
  return "at byte " + std::to_string(image.log.size());
}

std::optional<std::string> JournalBytes(const BaseDatabase& /*base*/, Image& image, Random& random) {
  if (image.journal.empty()) {
    return std::nullopt;
  }
  constexpr std::size_t kHeaderFields = 28;
  return ChangeByte(image.journal, random.Below(random.OneIn(2) ? kHeaderFields : image.journal.size()), random);
}

std::optional<std::string> CutJournal(const BaseDatabase& /*base*/, Image& image, Random& random) {
  if (image.journal.empty()) {
    return std::nullopt;
  }
  image.journal.resize(random.Below(image.journal.size()));
  return "at byte " + std::to_string(image.journal.size());
}

}  // namespace

std::vector<DamageKind> SideFileDamage() {
  return {{"byte of the log", &Log}, {"header in the log", &LogHeader},      {"page in the log", &LoggedPage},
          {"log cut", &CutLog},      {"byte of the journal", &JournalBytes}, {"journal cut", &CutJournal}};
}

}  // namespace corvo::test
