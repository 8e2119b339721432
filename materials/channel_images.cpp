#include "materials/channel_images.h"

#include "host/fnv1a.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kBuckets = 8;

std::uint64_t BucketOf(std::string_view channel) { return Fnv1a(channel) % kBuckets; }

}  // namespace

void ChannelImages::Insert(std::string_view channel, IZyItem* item) {
  const auto sameChannel = [&](const ChannelImage& entry) { return entry.channel == channel; };
  if (std::any_of(entries_.begin(), entries_.end(), sameChannel)) return;
  const auto sameBucket = [bucket = BucketOf(channel)](const ChannelImage& entry) {
    return BucketOf(entry.channel) == bucket;
  };
  entries_.insert(std::find_if(entries_.begin(), entries_.end(), sameBucket), {channel, item});
}
