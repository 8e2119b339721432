// The scene, its items and its animation in the failing host.
#include "host/action_api.h"
#include "host/scene_api.h"
#include "tests/support/failing_proxy.h"

namespace test_support {

namespace {

struct ItemPart final : Part<IZyItem> {
  zyresult TestType(std::uint32_t type) override { return Call(&Host::TestType, type); }
  std::uint32_t Type() override { return Call(&Host::Type); }
  zyresult Ident(const char*& text) override { return Call(&Host::Ident, text); }
  zyresult Name(const char*& text) override { return Call(&Host::Name, text); }
  zyresult Parent(IZyObject*& item) override { return CallFor(item, &Host::Parent); }
  zyresult SubCount(std::uint32_t& count) override { return Call(&Host::SubCount, count); }
  zyresult SubByIndex(std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &Host::SubByIndex, index);
  }
  zyresult ChannelCount(std::uint32_t& count) override { return Call(&Host::ChannelCount, count); }
  zyresult ChannelLookup(const char* name, std::int32_t& index) override {
    return Call(&Host::ChannelLookup, name, index);
  }
  zyresult ChannelName(std::int32_t index, const char*& text) override {
    return Call(&Host::ChannelName, index, text);
  }
  zyresult PackageTest(const char* name) override { return Call(&Host::PackageTest, name); }
  const char* GetTag(std::uint32_t tagId) override { return Call(&Host::GetTag, tagId); }
  zyresult Context(IZyObject*& scene) override { return CallFor(scene, &Host::Context); }
};

struct LocatorPart final : Part<IZyLocator> {
  zyresult TransformItem(TransformKind kind, IZyObject*& item) override {
    return CallFor(item, &Host::TransformItem, kind);
  }
  zyresult WorldTransform(IZyChannelRead* read, Matrix4& matrix) override {
    return Call(&Host::WorldTransform, read, matrix);
  }
};

struct TexturePart final : Part<IZyTexture> {
  zyresult LocatorItem(IZyObject*& item) override { return CallFor(item, &Host::LocatorItem); }
  const char* ImagePath() override { return Call(&Host::ImagePath); }
};

struct TriangleSurfacePart final : Part<IZyTriangleSurface> {};

struct ActionClipPart final : Part<IZyActionClip> {
  std::int32_t Active() override { return CallNumber(&Host::Active); }
  std::int32_t Enabled() override { return CallNumber(&Host::Enabled); }
  zyresult SetActive(std::int32_t state) override { return Call(&Host::SetActive, state); }
};

struct GroupItemPart final : Part<IZyGroupItem> {
  zyresult Enumerator(IZyObject*& enumerator) override { return CallFor(enumerator, &Host::Enumerator); }
};

struct GroupEnumeratorPart final : Part<IZyGroupEnumerator> {
  zyresult Enumerate(GroupMembers members, CZyImpl_AbstractVisitor& visitor) override {
    return Call(&Host::Enumerate, members, visitor);
  }
  zyresult Item(IZyObject*& item) override { return CallFor(item, &Host::Item); }
};

struct EnvelopePart final : Part<IZyEnvelope> {
  zyresult Keyframe(IZyObject*& keyframe) override { return CallFor(keyframe, &Host::Keyframe); }
};

struct KeyframePart final : Part<IZyKeyframe> {
  zyresult First() override { return Call(&Host::First); }
  zyresult Last() override { return Call(&Host::Last); }
  zyresult GetTime(double& seconds) override { return Call(&Host::GetTime, seconds); }
};

struct ChannelReadPart final : Part<IZyChannelRead> {
  zyresult ValueObject(IZyItem* item, std::int32_t channel, IZyObject*& object) override {
    return CallFor(object, &Host::ValueObject, item, channel);
  }
  zyresult Integer(IZyItem* item, std::int32_t channel, std::int32_t& value) override {
    return Call(&Host::Integer, item, channel, value);
  }
  zyresult Double(IZyItem* item, std::int32_t channel, double& value) override {
    return Call(&Host::Double, item, channel, value);
  }
  zyresult String(IZyItem* item, std::int32_t channel, const char*& text) override {
    return Call(&Host::String, item, channel, text);
  }
  std::int32_t IsAnimated(IZyItem* item, std::int32_t channel) override {
    return CallNumber(&Host::IsAnimated, item, channel);
  }
  zyresult ChannelEnvelope(IZyItem* item, std::int32_t channel, IZyObject*& envelope) override {
    return CallFor(envelope, &Host::ChannelEnvelope, item, channel);
  }
};

struct ItemGraphPart final : Part<IZyItemGraph> {
  zyresult FwdCount(IZyItem* item, std::uint32_t& count) override { return Call(&Host::FwdCount, item, count); }
  zyresult FwdByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return CallFor(out, &Host::FwdByIndex, item, index);
  }
  zyresult RevCount(IZyItem* item, std::uint32_t& count) override { return Call(&Host::RevCount, item, count); }
  zyresult RevByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) override {
    return CallFor(out, &Host::RevByIndex, item, index);
  }
};

struct ChannelGraphPart final : Part<IZyChannelGraph> {
  zyresult RevCount(IZyItem* item, std::int32_t channel, std::uint32_t& count) override {
    return Call(&Host::RevCount, item, channel, count);
  }
};

struct ScenePart final : Part<IZyScene> {
  zyresult Channels(const char* actionName, double time, IZyObject*& read) override {
    return CallFor(read, &Host::Channels, actionName, time);
  }
  zyresult SetupChannels(IZyObject*& read) override { return CallFor(read, &Host::SetupChannels); }
  zyresult ItemCount(std::uint32_t type, std::uint32_t& count) override {
    return Call(&Host::ItemCount, type, count);
  }
  zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &Host::ItemByIndex, type, index);
  }
  zyresult AnyItemOfType(std::uint32_t type, IZyObject*& item) override {
    return CallFor(item, &Host::AnyItemOfType, type);
  }
  zyresult GraphLookup(const char* name, IZyObject*& graph) override {
    return CallFor(graph, &Host::GraphLookup, name);
  }
  zyresult RenderCameraCount(std::uint32_t& count) override { return Call(&Host::RenderCameraCount, count); }
  zyresult RenderCameraByIndex(std::uint32_t index, IZyObject*& item) override {
    return CallFor(item, &Host::RenderCameraByIndex, index);
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
