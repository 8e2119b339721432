#include "headless/item.h"

#include "headless/actions.h"
#include "headless/channel_read.h"

#include <algorithm>
#include <string_view>

namespace headless {

void* Item::Interface(std::uint32_t id) {
  const auto isOfType = [&](const char* type) {
    return host_->index.IsOfType(index_, host_->index.Types().Code(type));
  };
  switch (id) {
    case IZyObject::kId:
    case IZyItem::kId:
      return static_cast<IZyItem*>(this);
    case IZyLocator::kId:
      return Data().hasLocator && host_->index.IsLocator(index_) ? static_cast<IZyLocator*>(this) : nullptr;
    case IZyTexture::kId:
      return isOfType("imageMap") ? static_cast<IZyTexture*>(this) : nullptr;
    case IZyActionClip::kId:
      return Data().clip ? static_cast<IZyActionClip*>(this) : nullptr;
    case IZyGroupItem::kId:
      return Data().group ? static_cast<IZyGroupItem*>(this) : nullptr;
    default:
      return nullptr;
  }
}

zyresult Item::TestType(std::uint32_t type) { return host_->index.IsOfType(index_, type) ? ZYe_OK : ZYe_FAILED; }

std::uint32_t Item::Type() { return host_->index.TypeOf(index_); }

zyresult Item::Ident(const char*& text) {
  text = Data().id.c_str();
  return ZYe_OK;
}

zyresult Item::Name(const char*& text) {
  text = Data().name.c_str();
  return ZYe_OK;
}

zyresult Item::Parent(IZyObject*& item) { return host_->Give(host_->index.Parent(index_), item); }

zyresult Item::SubCount(std::uint32_t& count) {
  count = static_cast<std::uint32_t>(host_->index.Children(index_).size());
  return ZYe_OK;
}

zyresult Item::SubByIndex(std::uint32_t index, IZyObject*& item) {
  const auto children = host_->index.Children(index_);
  return index < children.size() ? host_->Give(children[index], item) : ZYe_FAILED;
}

zyresult Item::ChannelCount(std::uint32_t& count) {
  count = static_cast<std::uint32_t>(Data().channels.size());
  return ZYe_OK;
}

zyresult Item::ChannelLookup(const char* name, std::int32_t& index) {
  if (!name) return ZYe_FAILED;
  const std::string_view wanted = name;
  const auto& channels = Data().channels;
  const auto channel = std::find_if(channels.begin(), channels.end(),
                                    [&](const ChannelData& candidate) { return candidate.name == wanted; });
  if (channel == channels.end()) return ZYe_FAILED;
  index = static_cast<std::int32_t>(channel - channels.begin());
  return ZYe_OK;
}

zyresult Item::ChannelName(std::int32_t index, const char*& text) {
  if (!host_->index.HasChannel({index_, index})) return ZYe_FAILED;
  text = host_->index.Channel({index_, index}).name.c_str();
  return ZYe_OK;
}

zyresult Item::PackageTest(const char* name) {
  if (!name) return ZYe_FAILED;
  const auto& packages = Data().extras->packages;
  return std::find(packages.begin(), packages.end(), name) != packages.end() ? ZYe_OK : ZYe_FAILED;
}

const char* Item::GetTag(std::uint32_t tagId) {
  const auto tag = Data().extras->tags.find(tagId);
  return tag == Data().extras->tags.end() ? nullptr : tag->second.c_str();
}

zyresult Item::Context(IZyObject*& scene) {
  scene = host_->Scene();
  scene->AddRef();
  return ZYe_OK;
}

zyresult Item::TransformItem(TransformKind kind, IZyObject*& item) {
  const auto& mains = Data().mainTransforms;
  const auto place = static_cast<std::size_t>(kind);
  return place < mains.size() ? host_->Give(mains[place], item) : ZYe_FAILED;
}

zyresult Item::WorldTransform(IZyChannelRead* read, Matrix4& matrix) {
  if (!read) return ZYe_FAILED;
  matrix = static_cast<ChannelRead*>(read)->World(index_);
  return ZYe_OK;
}

zyresult Item::LocatorItem(IZyObject*& item) { return host_->Give(Data().textureLocator, item); }

const char* Item::ImagePath() { return host_->ImagePath(index_); }

std::int32_t Item::Active() { return host_->values.IsActive(index_) ? 1 : 0; }

std::int32_t Item::Enabled() { return Data().clip->enabled ? 1 : 0; }

zyresult Item::SetActive(std::int32_t state) {
  host_->values.SetActivity(index_, state != 0 ? Activity::On : Activity::Off);
  return ZYe_OK;
}

zyresult Item::Enumerator(IZyObject*& enumerator) {
  enumerator = new GroupEnumerator(*host_, *Data().group);
  return ZYe_OK;
}

}  // namespace headless
