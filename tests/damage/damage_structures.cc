// Damage to the fields and pointers of the file format (https://www.sqlite.org/fileformat2.html).
#include <algorithm>

#include "damage/damage.h"

namespace corvo::test {
namespace {

struct Field {
  std::size_t offset;
  std::size_t width;
};

/// At least one, whatever the header says.
std::uint32_t PageCount(const Image& image) {
  constexpr std::size_t kSmallestPage = 512;
  const std::size_t page_size = std::max(PageSize(image.database), kSmallestPage);
  return static_cast<std::uint32_t>(std::max<std::size_t>(image.database.size() / page_size, 1));
}

/// A wrong value: a little off, a bound, some page, or anything.
std::uint32_t WrongValue(const Image& image, std::uint32_t value, Random& random) {
  switch (random.Below(6)) {
    case 0:
      return value + 1;
    case 1:
      return value - 1;
    case 2:
      return 0;
    case 3:
      return 0xFFFFFFFF >> random.Below(32);
    case 4:
      return random.Word();
    default:
      return 1 + static_cast<std::uint32_t>(random.Below(PageCount(image) + 1));
  }
}

std::optional<std::string> ChangeField(std::string& bytes, const Field& field, std::uint32_t value) {
  const std::uint32_t old = ReadNumber(bytes, field.offset, field.width);
  WriteNumber(bytes, field.offset, value, field.width);
  if (ReadNumber(bytes, field.offset, field.width) == old) {
    return std::nullopt;
  }
  return "at byte " + std::to_string(field.offset) + " from " + std::to_string(old) + " to " +
         std::to_string(ReadNumber(bytes, field.offset, field.width));
}

/// Another page than the one that is named.
std::optional<std::string> Redirect(Image& image, std::size_t offset, Random& random) {
  const auto page = 1 + static_cast<std::uint32_t>(random.Below(PageCount(image)));
  return ChangeField(image.database, {offset, 4}, random.OneIn(3) ? WrongValue(image, page, random) : page);
}

std::optional<std::string> FileHeader(const BaseDatabase& /*base*/, Image& image, Random& random) {
  static const std::vector<Field> fields = {{0, 4},  {16, 2}, {18, 1}, {19, 1}, {20, 1}, {21, 1}, {22, 1}, {23, 1},
                                            {24, 4}, {28, 4}, {32, 4}, {36, 4}, {40, 4}, {44, 4}, {48, 4}, {52, 4},
                                            {56, 4}, {60, 4}, {64, 4}, {68, 4}, {80, 4}, {92, 4}, {96, 4}};
  const Field& field = random.Of(fields);
  const std::uint32_t value = ReadNumber(image.database, field.offset, field.width);
  return ChangeField(image.database, field, WrongValue(image, value, random));
}

struct TreePage {
  std::size_t start;    ///< of its header
  std::size_t cells;    ///< of its list of cells
  std::uint32_t count;  ///< of its cells
  bool inner;
};

TreePage Read(const Image& image, std::uint32_t page) {
  constexpr std::uint32_t kLeafFlag = 8;
  TreePage tree{TreeHeader(image.database, page), 0, 0, false};
  tree.inner = (ReadNumber(image.database, tree.start, 1) & kLeafFlag) == 0;
  tree.cells = tree.start + (tree.inner ? 12 : 8);
  tree.count = ReadNumber(image.database, tree.start + 3, 2);
  return tree;
}

TreePage SomeTreePage(const BaseDatabase& base, const Image& image, Random& random) {
  return Read(image, random.Of(base.tree_pages));
}

/// Offset in the file of one cell of the page.
std::size_t Cell(const BaseDatabase& base, const Image& image, const TreePage& page, std::size_t number) {
  const std::size_t page_size = PageSize(base.image.database);
  return page.start / page_size * page_size + ReadNumber(image.database, page.cells + 2 * number, 2);
}

std::optional<std::string> PageHeader(const BaseDatabase& base, Image& image, Random& random) {
  static const std::vector<Field> fields = {{0, 1}, {1, 2}, {3, 2}, {5, 2}, {7, 1}, {8, 4}};
  Field field = random.Of(fields);
  field.offset += SomeTreePage(base, image, random).start;
  const std::uint32_t value = ReadNumber(image.database, field.offset, field.width);
  return ChangeField(image.database, field, WrongValue(image, value, random));
}

std::optional<std::string> CellPointer(const BaseDatabase& base, Image& image, Random& random) {
  const TreePage page = SomeTreePage(base, image, random);
  if (page.count == 0) {
    return std::nullopt;
  }
  const std::size_t offset = page.cells + 2 * random.Below(page.count);
  const std::size_t other = page.cells + 2 * random.Below(page.count);
  const std::uint32_t value = ReadNumber(image.database, random.OneIn(2) ? other : offset, 2);
  return ChangeField(image.database, {offset, 2}, random.OneIn(2) ? value : WrongValue(image, value, random));
}

/// Sizes, keys and types stand at the beginning of a cell.
std::optional<std::string> CellStart(const BaseDatabase& base, Image& image, Random& random) {
  const TreePage page = SomeTreePage(base, image, random);
  if (page.count == 0) {
    return std::nullopt;
  }
  const std::size_t cell = Cell(base, image, page, random.Below(page.count));
  const std::size_t offset = cell + random.Below(12);
  return ChangeField(image.database, {offset, 1}, WrongValue(image, ReadNumber(image.database, offset, 1), random));
}

std::optional<std::string> ChildPointer(const BaseDatabase& base, Image& image, Random& random) {
  const TreePage page = SomeTreePage(base, image, random);
  if (!page.inner) {
    return std::nullopt;
  }
  const std::size_t child = random.Below(page.count + 1);
  return Redirect(image, child == page.count ? page.start + 8 : Cell(base, image, page, child), random);
}

/// Where the statement of some table or index begins in the schema; behind the others of its row.
std::size_t Statement(const BaseDatabase& base, const Image& image, Random& random) {
  using namespace std::string_literals;
  static const std::vector<std::string> begin = {"CREATE"s, "C\0R\0E\0"s, "\0C\0R\0E"s};
  constexpr std::size_t kFileHeader = 100;
  constexpr std::size_t kPagesOfSchema = 3;
  constexpr std::size_t kEncodingField = 56;
  const std::size_t encoding = ReadNumber(base.image.database, kEncodingField) - 1;
  const std::size_t from = kFileHeader + random.Below(kPagesOfSchema * PageSize(base.image.database));
  return image.database.find(begin.at(encoding), from);
}

/// One bit of a row of the schema, from its sizes over its type and names to the first letters of its statement.
std::optional<std::string> SchemaRow(const BaseDatabase& base, Image& image, Random& random) {
  constexpr std::size_t kBefore = 56;
  constexpr std::size_t kLetters = 3;
  const std::size_t text = Statement(base, image, random);
  if (text == std::string::npos || text < kBefore) {
    return std::nullopt;
  }
  const std::size_t offset = text + kLetters - random.Below(kBefore + kLetters);
  const std::uint32_t value = ReadNumber(image.database, offset, 1);
  return ChangeField(image.database, {offset, 1}, value ^ 1U << random.Below(8));
}

/// The root page of a table or index, which stands right before the statement.
std::optional<std::string> RootPage(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t text = Statement(base, image, random);
  if (text == std::string::npos) {
    return std::nullopt;
  }
  return ChangeField(image.database, {text - 1, 1}, static_cast<std::uint32_t>(random.Below(PageCount(image) + 2)));
}

std::optional<std::string> OverflowPointer(const BaseDatabase& base, Image& image, Random& random) {
  const std::uint32_t page = random.Of(base.overflow_pages);
  if (random.OneIn(2)) {
    return Redirect(image, (page - 1) * PageSize(base.image.database), random);
  }
  // The pointer to the first of the chain, somewhere at the end of a cell.
  std::string pointer(4, '\0');
  WriteNumber(pointer, 0, page);
  const std::size_t offset = image.database.find(pointer);
  return offset == std::string::npos ? std::nullopt : Redirect(image, offset, random);
}

std::optional<std::string> FreePages(const BaseDatabase& base, Image& image, Random& random) {
  const std::uint32_t trunk = ReadNumber(image.database, 32);
  if (trunk == 0) {
    return std::nullopt;
  }
  const std::size_t start = (trunk - 1) * PageSize(base.image.database);
  const std::uint32_t leaves = std::min(ReadNumber(image.database, start + 4), PageCount(image));
  switch (random.Below(4)) {
    case 0:
      return Redirect(image, 32, random);
    case 1:
      return Redirect(image, start, random);
    case 2:
      return ChangeField(image.database, {start + 4, 4}, WrongValue(image, leaves, random));
    default:
      return Redirect(image, start + 8 + 4 * random.Below(leaves + 1), random);
  }
}

/// Entries of the pointer map, which says of every page what it is and which page names it.
std::optional<std::string> PointerMap(const BaseDatabase& base, Image& image, Random& random) {
  constexpr std::size_t kEntry = 5;
  constexpr std::size_t kLargestRoot = 52;
  const std::size_t page_size = PageSize(base.image.database);
  if (ReadNumber(image.database, kLargestRoot) == 0) {
    return std::nullopt;
  }
  const std::size_t entry =
      page_size + kEntry * random.Below(std::min<std::size_t>(page_size / kEntry, PageCount(image)));
  if (random.OneIn(2)) {
    return ChangeField(image.database, {entry, 1}, static_cast<std::uint32_t>(random.Below(7)));
  }
  return Redirect(image, entry + 1, random);
}

}  // namespace

std::vector<DamageKind> StructureDamage() {
  return {{"file header", &FileHeader},      {"page header", &PageHeader},           {"cell pointer", &CellPointer},
          {"start of a cell", &CellStart},   {"child pointer", &ChildPointer},       {"root page", &RootPage},
          {"row of the schema", &SchemaRow}, {"overflow pointer", &OverflowPointer}, {"free pages", &FreePages},
          {"pointer map", &PointerMap}};
}

}  // namespace corvo::test
