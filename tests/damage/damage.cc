#include "damage/damage.h"

namespace corvo::test {
namespace {

const std::vector<DamageKind>& AllKinds() {
  static const std::vector<DamageKind> kinds = [] {
    std::vector<DamageKind> all = BlockDamage();
    for (const auto& more : {StructureDamage(), SideFileDamage()}) {
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }();
  return kinds;
}

/// Damages the image once, in a way that its base admits.
void DamageOnce(DamagedImage& image, Random& random) {
  for (;;) {
    const DamageKind& kind = random.Of(AllKinds());
    if (const auto where = kind.damage(*image.base, image.files, random)) {
      image.description += (image.description.empty() ? "" : ", then ") + std::string(kind.name) + " " + *where;
      image.kind = image.kind.empty() ? kind.name : "two at once";
      return;
    }
  }
}

}  // namespace

DamagedImage MakeDamagedImage(std::uint64_t number) {
  Random random(number);
  DamagedImage image;
  image.base = &random.Of(BaseDatabases());
  image.files = image.base->image;
  DamageOnce(image, random);
  const bool is_cut_to_nothing = image.files.database.size() < PageSize(image.base->image.database);
  if (!is_cut_to_nothing && random.OneIn(8)) {
    DamageOnce(image, random);
  }
  return image;
}

}  // namespace corvo::test
