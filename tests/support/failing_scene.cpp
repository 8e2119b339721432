// The scene, its items and its animation in the failing host.
#include "host/action_api.h"
#include "host/scene_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

class ItemPart final : public Part<IZyItem> {
 public:
  using Part<IZyItem>::Part;
  zyresult TestType(std::uint32_t type) override { return Call(&IZyItem::TestType, type); }
  std::uint32_t Type() override { return Call(&IZyItem::Type); }
  zyresult Ident(const char*& text) override { return Call(&IZyItem::Ident, text); }
  zyresult Name(const char*& text) override { return Call(&IZyItem::Name, text); }
  zyresult Parent(IZyObject*& item) override { return CallFor(item, &IZyItem::Parent); }
  zyresult SubCount(std::uint32_t& count) override { return Call(&IZyItem::SubCount, count); }
  zyresult SubByIndex(std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &IZyItem::SubByIndex, index);
  }
  zyresult ChannelCount(std::uint32_t& count) override { return Call(&IZyItem::ChannelCount, count); }
  zyresult ChannelLookup(const char* name, std::int32_t& index) override {
    return Call(&IZyItem::ChannelLookup, name, index);
  }
  zyresult ChannelName(std::int32_t index, const char*& text) override {
    return Call(&IZyItem::ChannelName, index, text);
  }
  zyresult PackageTest(const char* name) override { return Call(&IZyItem::PackageTest, name); }
  const char* GetTag(std::uint32_t tagId) override { return Call(&IZyItem::GetTag, tagId); }
  zyresult Context(IZyObject*& scene) override { return CallFor(scene, &IZyItem::Context); }
};

class LocatorPart final : public Part<IZyLocator> {
 public:
  using Part<IZyLocator>::Part;
  zyresult TransformItem(TransformKind kind, IZyObject*& item) override {
    return CallFor(item, &IZyLocator::TransformItem, kind);
  }
  zyresult WorldTransform(IZyChannelRead* read, Matrix4& matrix) override {
    return Call(&IZyLocator::WorldTransform, read, matrix);
  }
};

class TexturePart final : public Part<IZyTexture> {
 public:
  using Part<IZyTexture>::Part;
  zyresult LocatorItem(IZyObject*& item) override { return CallFor(item, &IZyTexture::LocatorItem); }
  const char* ImagePath() override { return Call(&IZyTexture::ImagePath); }
};

class TriangleSurfacePart final : public Part<IZyTriangleSurface> {
 public:
  using Part<IZyTriangleSurface>::Part;
};

class ActionClipPart final : public Part<IZyActionClip> {
 public:
  using Part<IZyActionClip>::Part;
  std::int32_t Active() override { return CallNumber(&IZyActionClip::Active); }
  std::int32_t Enabled() override { return CallNumber(&IZyActionClip::Enabled); }
  zyresult SetActive(std::int32_t state) override { return Call(&IZyActionClip::SetActive, state); }
};

class GroupItemPart final : public Part<IZyGroupItem> {
 public:
  using Part<IZyGroupItem>::Part;
  zyresult Enumerator(IZyObject*& enumerator) override { return CallFor(enumerator, &IZyGroupItem::Enumerator); }
};

class GroupEnumeratorPart final : public Part<IZyGroupEnumerator> {
 public:
  using Part<IZyGroupEnumerator>::Part;
  zyresult Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) override {
    return Call(&IZyGroupEnumerator::Enumerate, members, visitor);
  }
  zyresult Item(IZyObject*& item) override { return CallFor(item, &IZyGroupEnumerator::Item); }
};

class EnvelopePart final : public Part<IZyEnvelope> {
 public:
  using Part<IZyEnvelope>::Part;
  zyresult Keyframe(IZyObject*& keyframe) override { return CallFor(keyframe, &IZyEnvelope::Keyframe); }
};

class KeyframePart final : public Part<IZyKeyframe> {
 public:
  using Part<IZyKeyframe>::Part;
  zyresult First() override { return Call(&IZyKeyframe::First); }
  zyresult Last() override { return Call(&IZyKeyframe::Last); }
  zyresult GetTime(double& seconds) override { return Call(&IZyKeyframe::GetTime, seconds); }
};

class ChannelReadPart final : public Part<IZyChannelRead> {
 public:
  using Part<IZyChannelRead>::Part;
  zyresult ValueObject(IZyItem* item, std::int32_t channel, IZyObject*& object) override {
    return CallFor(object, &IZyChannelRead::ValueObject, item, channel);
  }
  zyresult Integer(IZyItem* item, std::int32_t channel, std::int32_t& value) override {
    return Call(&IZyChannelRead::Integer, item, channel, value);
  }
  zyresult Double(IZyItem* item, std::int32_t channel, double& value) override {
    return Call(&IZyChannelRead::Double, item, channel, value);
  }
  zyresult String(IZyItem* item, std::int32_t channel, const char*& text) override {
    return Call(&IZyChannelRead::String, item, channel, text);
  }
  std::int32_t IsAnimated(IZyItem* item, std::int32_t channel) override {
    return CallNumber(&IZyChannelRead::IsAnimated, item, channel);
  }
  zyresult ChannelEnvelope(IZyItem* item, std::int32_t channel, IZyObject*& envelope) override {
    return CallFor(envelope, &IZyChannelRead::ChannelEnvelope, item, channel);
  }
};

class ItemGraphPart final : public Part<IZyItemGraph> {
 public:
  using Part<IZyItemGraph>::Part;
  zyresult FwdCount(IZyItem* item, std::uint32_t& count) override {
    return Call(&IZyItemGraph::FwdCount, item, count);
  }
  zyresult FwdByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return CallFor(out, &IZyItemGraph::FwdByIndex, item, index);
  }
  zyresult RevCount(IZyItem* item, std::uint32_t& count) override {
    return Call(&IZyItemGraph::RevCount, item, count);
  }
  zyresult RevByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return CallFor(out, &IZyItemGraph::RevByIndex, item, index);
  }
};

class ChannelGraphPart final : public Part<IZyChannelGraph> {
 public:
  using Part<IZyChannelGraph>::Part;
  zyresult RevCount(IZyItem* item, std::int32_t channel, std::uint32_t& count) override {
    return Call(&IZyChannelGraph::RevCount, item, channel, count);
  }
};

class ScenePart final : public Part<IZyScene> {
 public:
  using Part<IZyScene>::Part;
  zyresult Channels(const char* actionName, double time, IZyObject*& read) override {
    return CallFor(read, &IZyScene::Channels, actionName, time);
  }
  zyresult SetupChannels(IZyObject*& read) override { return CallFor(read, &IZyScene::SetupChannels); }
  zyresult ItemCount(std::uint32_t type, std::uint32_t& count) override {
    return Call(&IZyScene::ItemCount, type, count);
  }
  zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &IZyScene::ItemByIndex, type, index);
  }
  zyresult AnyItemOfType(std::uint32_t type, IZyObject*& item) override {
    return CallFor(item, &IZyScene::AnyItemOfType, type);
  }
  zyresult GraphLookup(const char* name, IZyObject*& graph) override {
    return CallFor(graph, &IZyScene::GraphLookup, name);
  }
  zyresult RenderCameraCount(std::uint32_t& count) override { return Call(&IZyScene::RenderCameraCount, count); }
  zyresult RenderCameraByIndex(std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &IZyScene::RenderCameraByIndex, index);
  }
};

constexpr PartRow kParts[] = {
    RowOf<ItemPart>(),       RowOf<LocatorPart>(),   RowOf<TexturePart>(),         RowOf<TriangleSurfacePart>(),
    RowOf<ActionClipPart>(), RowOf<GroupItemPart>(), RowOf<GroupEnumeratorPart>(), RowOf<EnvelopePart>(),
    RowOf<KeyframePart>(),   RowOf<ItemGraphPart>(), RowOf<ChannelGraphPart>(),    RowOf<ChannelReadPart>(),
    RowOf<ScenePart>()};

}  // namespace

std::span<const PartRow> SceneParts() { return kParts; }

}  // namespace test_support
