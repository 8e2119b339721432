// Wrappers of the scene's interfaces. Each call on an empty wrapper fails; see object.h.
#pragma once

#include "host/scene_api.h"

class CZyUser_Scene;
class CZyUser_Envelope;

class CZyUser_Item : public CountedRef<IZyItem> {
 public:
  zyresult TestType(std::uint32_t type) const { return Call(&IZyItem::TestType, type); }
  std::uint32_t Type() const { return Raw() ? Raw()->Type() : 0; }
  zyresult Ident(const char*& text) const { return Call(&IZyItem::Ident, text); }
  zyresult Name(const char*& text) const { return Call(&IZyItem::Name, text); }
  zyresult Parent(CZyUser_Item& item) const { return CallFor(item, &IZyItem::Parent); }
  zyresult SubCount(std::uint32_t& count) const { return Call(&IZyItem::SubCount, count); }
  zyresult SubByIndex(std::uint32_t index, CZyUser_Item& item) const {
    return CallFor(item, &IZyItem::SubByIndex, index);
  }
  zyresult ChannelCount(std::uint32_t& count) const { return Call(&IZyItem::ChannelCount, count); }
  zyresult ChannelLookup(const char* name, std::int32_t& index) const {
    return Call(&IZyItem::ChannelLookup, name, index);
  }
  zyresult ChannelName(std::int32_t index, const char*& text) const {
    return Call(&IZyItem::ChannelName, index, text);
  }
  zyresult PackageTest(const char* name) const { return Call(&IZyItem::PackageTest, name); }
  const char* GetTag(std::uint32_t tagId) const { return Raw() ? Raw()->GetTag(tagId) : nullptr; }
  zyresult Context(CZyUser_Scene& scene) const;
};

class CZyUser_ChannelRead : public CountedRef<IZyChannelRead> {
 public:
  template <class T>
  zyresult ValueObject(const CZyUser_Item& item, std::int32_t channel, CountedRef<T>& object) const {
    return CallFor(object, &IZyChannelRead::ValueObject, item.Raw(), channel);
  }
  zyresult Integer(const CZyUser_Item& item, std::int32_t channel, std::int32_t& value) const {
    return Call(&IZyChannelRead::Integer, item.Raw(), channel, value);
  }
  zyresult Double(const CZyUser_Item& item, std::int32_t channel, double& value) const {
    return Call(&IZyChannelRead::Double, item.Raw(), channel, value);
  }
  zyresult String(const CZyUser_Item& item, std::int32_t channel, const char*& text) const {
    return Call(&IZyChannelRead::String, item.Raw(), channel, text);
  }
  std::int32_t IsAnimated(const CZyUser_Item& item, std::int32_t channel) const {
    return Raw() ? Raw()->IsAnimated(item.Raw(), channel) : 0;
  }
  zyresult ChannelEnvelope(const CZyUser_Item& item, std::int32_t channel, CZyUser_Envelope& envelope) const;
};

class CZyUser_ItemGraph : public CountedRef<IZyItemGraph> {
 public:
  zyresult FwdCount(const CZyUser_Item& item, std::uint32_t& count) const {
    return Call(&IZyItemGraph::FwdCount, item.Raw(), count);
  }
  zyresult FwdByIndex(const CZyUser_Item& item, std::uint32_t index, CZyUser_Item& out) const {
    return CallFor(out, &IZyItemGraph::FwdByIndex, item.Raw(), index);
  }
  zyresult RevCount(const CZyUser_Item& item, std::uint32_t& count) const {
    return Call(&IZyItemGraph::RevCount, item.Raw(), count);
  }
  zyresult RevByIndex(const CZyUser_Item& item, std::uint32_t index, CZyUser_Item& out) const {
    return CallFor(out, &IZyItemGraph::RevByIndex, item.Raw(), index);
  }
};

class CZyUser_ChannelGraph : public CountedRef<IZyChannelGraph> {
 public:
  zyresult RevCount(const CZyUser_Item& item, std::int32_t channel, std::uint32_t& count) const {
    return Call(&IZyChannelGraph::RevCount, item.Raw(), channel, count);
  }
};

class CZyUser_Locator : public CountedRef<IZyLocator> {
 public:
  zyresult TransformItem(TransformKind kind, CZyUser_Item& item) const {
    return CallFor(item, &IZyLocator::TransformItem, kind);
  }
  zyresult WorldTransform(const CZyUser_ChannelRead& read, Matrix4& matrix) const {
    return Call(&IZyLocator::WorldTransform, read.Raw(), matrix);
  }
};

class CZyUser_Scene : public CountedRef<IZyScene> {
 public:
  zyresult Channels(const char* actionName, double time, CZyUser_ChannelRead& read) const {
    return CallFor(read, &IZyScene::Channels, actionName, time);
  }
  zyresult SetupChannels(CZyUser_ChannelRead& read) const { return CallFor(read, &IZyScene::SetupChannels); }
  zyresult ItemCount(std::uint32_t type, std::uint32_t& count) const {
    return Call(&IZyScene::ItemCount, type, count);
  }
  zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, CZyUser_Item& item) const {
    return CallFor(item, &IZyScene::ItemByIndex, type, index);
  }
  zyresult AnyItemOfType(std::uint32_t type, CZyUser_Item& item) const {
    return CallFor(item, &IZyScene::AnyItemOfType, type);
  }
  template <class T>
  zyresult GraphLookup(const char* name, CountedRef<T>& graph) const {
    return CallFor(graph, &IZyScene::GraphLookup, name);
  }
  zyresult RenderCameraCount(std::uint32_t& count) const { return Call(&IZyScene::RenderCameraCount, count); }
  zyresult RenderCameraByIndex(std::uint32_t index, CZyUser_Item& item) const {
    return CallFor(item, &IZyScene::RenderCameraByIndex, index);
  }
};

class CZyUser_Texture : public CountedRef<IZyTexture> {
 public:
  zyresult LocatorItem(CZyUser_Item& item) const { return CallFor(item, &IZyTexture::LocatorItem); }
  const char* ImagePath() const { return Raw() ? Raw()->ImagePath() : nullptr; }
};

inline zyresult CZyUser_Item::Context(CZyUser_Scene& scene) const { return CallFor(scene, &IZyItem::Context); }
