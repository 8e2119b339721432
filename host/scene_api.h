// The host's scene: items, channels, graphs, locators.
//
// Every operation that can fail returns a zyresult; on failure it leaves its outputs as they were.
// Result objects come counted. Texts belong to the host and outlive the save.
#pragma once

#include "host/matrix4.h"
#include "host/object.h"

struct IZyItem : IZyObject {
  static constexpr std::uint32_t kId = 0x101;

  // ZYe_OK when the item is of the type or of one derived from it.
  virtual zyresult TestType(std::uint32_t type) = 0;
  virtual std::uint32_t Type() = 0;
  // Unique identity: compared by pointer, not by characters.
  virtual zyresult Ident(const char*& text) = 0;
  virtual zyresult Name(const char*& text) = 0;
  virtual zyresult Parent(IZyObject*& item) = 0;
  virtual zyresult SubCount(std::uint32_t& count) = 0;
  virtual zyresult SubByIndex(std::uint32_t index, IZyObject*& item) = 0;
  virtual zyresult ChannelCount(std::uint32_t& count) = 0;
  virtual zyresult ChannelLookup(const char* name, std::int32_t& index) = 0;
  virtual zyresult ChannelName(std::int32_t index, const char*& text) = 0;
  // ZYe_OK when the item carries the named package.
  virtual zyresult PackageTest(const char* name) = 0;
  // The string tag, null when not set.
  virtual const char* GetTag(std::uint32_t tagId) = 0;
  virtual zyresult Context(IZyObject*& scene) = 0;

 protected:
  ~IZyItem() = default;
};

// One state of the channels: an action layer, the setup, or the evaluated scene at a time.
struct IZyChannelRead : IZyObject {
  static constexpr std::uint32_t kId = 0x102;

  virtual zyresult ValueObject(IZyItem* item, std::int32_t channel, IZyObject*& object) = 0;
  virtual zyresult Integer(IZyItem* item, std::int32_t channel, std::int32_t& value) = 0;
  virtual zyresult Double(IZyItem* item, std::int32_t channel, double& value) = 0;
  virtual zyresult String(IZyItem* item, std::int32_t channel, const char*& text) = 0;
  // Non-zero when the channel has an envelope of its own in this state.
  virtual std::int32_t IsAnimated(IZyItem* item, std::int32_t channel) = 0;
  virtual zyresult ChannelEnvelope(IZyItem* item, std::int32_t channel, IZyObject*& envelope) = 0;

 protected:
  ~IZyChannelRead() = default;
};

struct IZyItemGraph : IZyObject {
  static constexpr std::uint32_t kId = 0x103;

  virtual zyresult FwdCount(IZyItem* item, std::uint32_t& count) = 0;
  virtual zyresult FwdByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) = 0;
  virtual zyresult RevCount(IZyItem* item, std::uint32_t& count) = 0;
  virtual zyresult RevByIndex(IZyItem* item, std::uint32_t index, IZyObject*& out) = 0;

 protected:
  ~IZyItemGraph() = default;
};

struct IZyChannelGraph : IZyObject {
  static constexpr std::uint32_t kId = 0x104;

  // The number of links that drive the channel. A channel number the item doesn't have fails.
  virtual zyresult RevCount(IZyItem* item, std::int32_t channel, std::uint32_t& count) = 0;

 protected:
  ~IZyChannelGraph() = default;
};

enum class TransformKind : std::uint32_t { Scale = 0, Rotation = 1, Position = 2 };

struct IZyLocator : IZyObject {
  static constexpr std::uint32_t kId = 0x105;

  // The locator's main transform item of the kind; fails when there is none.
  virtual zyresult TransformItem(TransformKind kind, IZyObject*& item) = 0;
  virtual zyresult WorldTransform(IZyChannelRead* read, Matrix4& matrix) = 0;

 protected:
  ~IZyLocator() = default;
};

struct IZyScene : IZyObject {
  static constexpr std::uint32_t kId = 0x106;

  // `actionName` is "setup" or "edit"; null reads the evaluated scene at `time`, in seconds.
  virtual zyresult Channels(const char* actionName, double time, IZyObject*& read) = 0;
  // The setup (bind) state.
  virtual zyresult SetupChannels(IZyObject*& read) = 0;
  // Items of the type and of types derived from it, in scene order; type kAllItems means every item.
  virtual zyresult ItemCount(std::uint32_t type, std::uint32_t& count) = 0;
  virtual zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) = 0;
  virtual zyresult AnyItemOfType(std::uint32_t type, IZyObject*& item) = 0;
  // The graph answers as IZyItemGraph and as IZyChannelGraph.
  virtual zyresult GraphLookup(const char* name, IZyObject*& graph) = 0;
  virtual zyresult RenderCameraCount(std::uint32_t& count) = 0;
  virtual zyresult RenderCameraByIndex(std::uint32_t index, IZyObject*& item) = 0;

 protected:
  ~IZyScene() = default;
};

constexpr std::uint32_t kAllItems = 0xFFFFFFFFu;

// The texture behind an image map item.
struct IZyTexture : IZyObject {
  static constexpr std::uint32_t kId = 0x107;

  virtual zyresult LocatorItem(IZyObject*& item) = 0;
  // Path of the image file, null when the map has no image.
  virtual const char* ImagePath() = 0;

 protected:
  ~IZyTexture() = default;
};

// A surface of triangles, the value of a triSurf item's "surf" channel.
struct IZyTriangleSurface : IZyObject {
  static constexpr std::uint32_t kId = 0x108;

 protected:
  ~IZyTriangleSurface() = default;
};
