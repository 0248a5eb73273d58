// Damage that knows nothing of what it hits, as disks, memory and interrupted copies cause it.
#include <algorithm>

#include "damage/damage.h"

namespace corvo::test {
namespace {

constexpr std::size_t kSector = 512;

std::string At(std::size_t offset) { return "at byte " + std::to_string(offset); }

std::size_t PageCount(const Image& image, std::size_t page_size) { return image.database.size() / page_size; }

/// A place in the database; every other one in a page of a tree, where most of the structure is.
std::size_t Place(const BaseDatabase& base, const Image& image, Random& random) {
  const std::size_t page_size = PageSize(base.image.database);
  const std::size_t page = (random.Of(base.tree_pages) - 1) * page_size;
  const std::size_t place = page + random.Below(page_size);
  return random.OneIn(2) && place < image.database.size() ? place : random.Below(image.database.size());
}

std::optional<std::string> FlipBit(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t place = Place(base, image, random);
  const std::size_t bit = random.Below(8);
  image.database[place] = static_cast<char>(static_cast<unsigned char>(image.database[place]) ^ (1U << bit));
  return At(place) + " bit " + std::to_string(bit);
}

std::optional<std::string> ChangeBytes(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t place = Place(base, image, random);
  const std::size_t count = std::min(1 + random.Below(8), image.database.size() - place);
  for (std::size_t byte = 0; byte < count; ++byte) {
    image.database[place + byte] = static_cast<char>(random.Word());
  }
  return At(place) + " count " + std::to_string(count);
}

/// Start of the sector or page that holds the place.
std::size_t BlockStart(std::size_t place, std::size_t block) { return place / block * block; }

std::optional<std::string> Fill(const BaseDatabase& base, Image& image, Random& random, std::size_t block,
                                bool garbage) {
  const std::size_t start = BlockStart(Place(base, image, random), block);
  const std::size_t end = std::min(start + block, image.database.size());
  for (std::size_t byte = start; byte < end; ++byte) {
    image.database[byte] = garbage ? static_cast<char>(random.Word()) : '\0';
  }
  return At(start);
}

/// A block that arrived at the wrong place.
std::optional<std::string> Copy(const BaseDatabase& base, Image& image, Random& random, std::size_t block) {
  const std::size_t from = BlockStart(Place(base, image, random), block);
  const std::size_t to = BlockStart(Place(base, image, random), block);
  if (from == to || std::max(from, to) + block > image.database.size()) {
    return std::nullopt;
  }
  image.database.replace(to, block, std::string(image.database, from, block));
  return At(to) + " from " + std::to_string(from);
}

/// A block whose last write got lost.
std::optional<std::string> GoBack(const BaseDatabase& base, Image& image, Random& random, std::size_t block) {
  const std::size_t start = BlockStart(Place(base, image, random), block);
  const std::string& older = base.older.database;
  if (start + block > std::min(older.size(), image.database.size()) ||
      image.database.compare(start, block, older, start, block) == 0) {
    return std::nullopt;
  }
  image.database.replace(start, block, older, start, block);
  return At(start);
}

std::optional<std::string> ZeroSector(const BaseDatabase& base, Image& image, Random& random) {
  return Fill(base, image, random, kSector, false);
}

std::optional<std::string> FillSector(const BaseDatabase& base, Image& image, Random& random) {
  return Fill(base, image, random, kSector, true);
}

std::optional<std::string> CopySector(const BaseDatabase& base, Image& image, Random& random) {
  return Copy(base, image, random, kSector);
}

std::optional<std::string> LoseSectorWrite(const BaseDatabase& base, Image& image, Random& random) {
  return GoBack(base, image, random, kSector);
}

std::optional<std::string> ZeroPage(const BaseDatabase& base, Image& image, Random& random) {
  return Fill(base, image, random, PageSize(base.image.database), false);
}

std::optional<std::string> FillPage(const BaseDatabase& base, Image& image, Random& random) {
  return Fill(base, image, random, PageSize(base.image.database), true);
}

std::optional<std::string> CopyPage(const BaseDatabase& base, Image& image, Random& random) {
  return Copy(base, image, random, PageSize(base.image.database));
}

std::optional<std::string> LosePageWrite(const BaseDatabase& base, Image& image, Random& random) {
  return GoBack(base, image, random, PageSize(base.image.database));
}

std::optional<std::string> SwapPages(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t size = PageSize(base.image.database);
  const std::size_t one = BlockStart(Place(base, image, random), size);
  const std::size_t two = BlockStart(Place(base, image, random), size);
  if (one == two || std::max(one, two) + size > image.database.size()) {
    return std::nullopt;
  }
  std::swap_ranges(&image.database[one], &image.database[one] + size, &image.database[two]);
  return At(one) + " with " + std::to_string(two);
}

/// From here on everything lies further back in the file, or nearer, by whole pages or not.
std::optional<std::string> Shift(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t size = PageSize(base.image.database);
  const std::size_t place = BlockStart(Place(base, image, random), size);
  const std::size_t distance = random.OneIn(2) ? size : 1 + random.Below(size);
  if (random.OneIn(2)) {
    image.database.insert(place, distance, '\0');
    return At(place) + " back by " + std::to_string(distance);
  }
  image.database.erase(place, distance);
  return At(place) + " forth by " + std::to_string(distance);
}

std::optional<std::string> CutAtPage(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t size = PageSize(base.image.database);
  image.database.resize(random.Below(PageCount(image, size)) * size);
  return At(image.database.size());
}

std::optional<std::string> CutAnywhere(const BaseDatabase& /*base*/, Image& image, Random& random) {
  image.database.resize(random.Below(image.database.size()));
  return At(image.database.size());
}

std::optional<std::string> Append(const BaseDatabase& base, Image& image, Random& random) {
  const std::size_t bytes = random.OneIn(2) ? PageSize(base.image.database) : 1 + random.Below(5000);
  for (std::size_t byte = 0; byte < bytes; ++byte) {
    image.database.push_back(static_cast<char>(random.Word()));
  }
  return std::to_string(bytes) + " bytes";
}

}  // namespace

std::vector<DamageKind> BlockDamage() {
  return {{"bit", &FlipBit},
          {"bytes", &ChangeBytes},
          {"sector zeroed", &ZeroSector},
          {"sector of garbage", &FillSector},
          {"sector copied", &CopySector},
          {"sector not written", &LoseSectorWrite},
          {"page zeroed", &ZeroPage},
          {"page of garbage", &FillPage},
          {"page copied", &CopyPage},
          {"page not written", &LosePageWrite},
          {"pages swapped", &SwapPages},
          {"content shifted", &Shift},
          {"cut at a page", &CutAtPage},
          {"cut anywhere", &CutAnywhere},
          {"bytes appended", &Append}};
}

}  // namespace corvo::test
