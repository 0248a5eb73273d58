#include "damage/image.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace corvo::test {
namespace {

constexpr std::size_t kFileHeader = 100;

std::filesystem::path Beside(std::filesystem::path file, const char* suffix) { return file += suffix; }

/// A damaged journal can make SQLite grow a file to more than a hundred gigabytes of nothing. No base is a hundredth of
/// what is read.
std::string Content(const std::filesystem::path& file) {
  constexpr std::uintmax_t kMostBytes = 64 * 1024 * 1024;
  std::error_code missing;
  const std::uintmax_t size = std::filesystem::file_size(file, missing);
  std::string content(missing ? 0 : std::min(size, kMostBytes), '\0');
  std::ifstream(file, std::ios::binary).read(content.data(), static_cast<std::streamsize>(content.size()));
  return content;
}

void WriteContent(const std::filesystem::path& file, const std::string& content) {
  std::ofstream stream(file, std::ios::binary);
  stream.exceptions(std::ios::badbit | std::ios::failbit);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
}

}  // namespace

Image Image::Read(const std::filesystem::path& file) {
  return {Content(file), Content(Beside(file, "-wal")), Content(Beside(file, "-journal"))};
}

void Image::Write(const std::filesystem::path& file) const {
  WriteContent(file, database);
  if (!log.empty()) {
    WriteContent(Beside(file, "-wal"), log);
  }
  if (!journal.empty()) {
    WriteContent(Beside(file, "-journal"), journal);
  }
}

std::uint32_t ReadNumber(const std::string& bytes, std::size_t offset, std::size_t width) {
  std::uint32_t number = 0;
  for (std::size_t byte = 0; byte < width && offset + width <= bytes.size(); ++byte) {
    number = number << 8U | static_cast<unsigned char>(bytes[offset + byte]);
  }
  return number;
}

void WriteNumber(std::string& bytes, std::size_t offset, std::uint32_t number, std::size_t width) {
  for (std::size_t byte = 0; byte < width && offset + width <= bytes.size(); ++byte) {
    bytes[offset + byte] = static_cast<char>(number >> 8U * (width - 1 - byte) & 0xFFU);
  }
}

std::size_t PageSize(const std::string& database) {
  constexpr std::size_t kPageSizeField = 16;
  const std::uint32_t size = ReadNumber(database, kPageSizeField, 2);
  return size == 1 ? 65536 : size;
}

std::size_t TreeHeader(const std::string& database, std::uint32_t page) {
  return page == 1 ? kFileHeader : (page - 1) * PageSize(database);
}

}  // namespace corvo::test
