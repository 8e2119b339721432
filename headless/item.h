// Items of the scene.
#pragma once

#include "headless/host_state.h"
#include "host/action_api.h"
#include "host/scene_api.h"

namespace headless {

// One object per item for the host's whole life. Which interfaces it answers to depends on its type and data.
class Item final : public IZyItem,
                   public IZyLocator,
                   public IZyTexture,
                   public IZyActionClip,
                   public IZyGroupItem {
 public:
  Item(HostState& host, ItemIndex index) : host_(&host), index_(index) {}

  ItemIndex Index() const { return index_; }

  void AddRef() override {}
  void Release() override {}
  void* Interface(std::uint32_t id) override;

  zyresult TestType(std::uint32_t type) override;
  std::uint32_t Type() override;
  zyresult Ident(const char*& text) override;
  zyresult Name(const char*& text) override;
  zyresult Parent(IZyObject*& item) override;
  zyresult SubCount(std::uint32_t& count) override;
  zyresult SubByIndex(std::uint32_t index, IZyObject*& item) override;
  zyresult ChannelCount(std::uint32_t& count) override;
  zyresult ChannelLookup(const char* name, std::int32_t& index) override;
  zyresult ChannelName(std::int32_t index, const char*& text) override;
  zyresult PackageTest(const char* name) override;
  const char* GetTag(std::uint32_t tagId) override;
  zyresult Context(IZyObject*& scene) override;

  zyresult TransformItem(TransformKind kind, IZyObject*& item) override;
  zyresult WorldTransform(IZyChannelRead* read, Matrix4& matrix) override;

  zyresult LocatorItem(IZyObject*& item) override;
  const char* ImagePath() override;

  std::int32_t Active() override;
  std::int32_t Enabled() override;
  zyresult SetActive(std::int32_t state) override;

  zyresult Enumerator(IZyObject*& enumerator) override;

 private:
  const ItemData& Data() const { return host_->Data(index_); }

  HostState* host_;
  ItemIndex index_;
};

}  // namespace headless
