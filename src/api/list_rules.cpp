#include "api/list_rules.h"

#include "api/ipodctl.h"

namespace ipodctl {
namespace {

constexpr int kNoType = -1;

constexpr auto kType6 = static_cast<Category>(IPOD_TYPE_6);
constexpr auto kType7 = static_cast<Category>(IPOD_TYPE_7);
constexpr auto kType8 = static_cast<Category>(IPOD_TYPE_8);

}  // namespace

Category categoryOfType(int type) {
  return type >= IPOD_PLAYLISTS && type <= IPOD_TYPE_8 ? static_cast<Category>(type)
                                                       : Category::kNone;
}

int typeOfCategory(Category category) {
  return category == Category::kNone ? kNoType : static_cast<int>(category);
}

bool isListed(Category category) {
  return category >= Category::kPlaylists && category <= Category::kPodcasts;
}

bool allowsTabs(Category category) {
  return category >= Category::kPlaylists && category <= Category::kGenres;
}

bool hasPlayAll(Category category) {
  return category == Category::kArtists || category == Category::kAlbums;
}

RecordIndex firstOffered(Category category) { return category == Category::kPlaylists ? 1 : 0; }

Category topLevelCategory(Category category) {
  switch (category) {
    case kType6:
      return Category::kAudiobooks;
    case kType7:
      return Category::kPodcasts;
    case kType8:
      return Category::kComposers;
    default:
      return category;
  }
}

SortOrder sortOrderOf(Category category) {
  switch (category) {
    case Category::kPlaylists:
    case Category::kTracks:
      return SortOrder::kName;
    case Category::kArtists:
      return SortOrder::kArtist;
    case Category::kAlbums:
      return SortOrder::kAlbum;
    case Category::kGenres:
      return SortOrder::kGenre;
    default:
      return SortOrder::kDefault;
  }
}

}  // namespace ipodctl
