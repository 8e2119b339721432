// A headless host around a scene made in code, asked through the plug-in's wrappers.
#pragma once

#include "headless/host.h"
#include "host/user_action.h"
#include "host/user_scene.h"
#include "host/user_services.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace test_support {

inline headless::ItemData& At(headless::SceneData& scene, headless::ItemIndex item) {
  return scene.items[static_cast<std::size_t>(item)];
}

inline headless::ChannelData& ChannelOf(headless::SceneData& scene, headless::ItemIndex item,
                                        const std::string& name) {
  return At(scene, item).channels[static_cast<std::size_t>(headless::FindChannel(At(scene, item), name))];
}

inline headless::EnvelopeData Keys(std::vector<headless::KeyData> keys) { return {std::move(keys), {}, {}}; }

// How a read is asked for.
enum class State { Setup, Edit, Bind, Evaluated };

class HostRig {
 public:
  explicit HostRig(headless::SceneData data) : host(std::move(data)) {
    SetZyHost(&host);
    scene.Set(host.Scene());
  }
  ~HostRig() { SetZyHost(nullptr); }

  CZyUser_Item Item(headless::ItemIndex index) const {
    CZyUser_Item item;
    EXPECT_EQ(scene.ItemByIndex(kAllItems, static_cast<std::uint32_t>(index), item), ZYe_OK);
    return item;
  }

  CZyUser_ChannelRead Read(State state, double time = 0) const {
    CZyUser_ChannelRead read;
    if (state == State::Bind)
      EXPECT_EQ(scene.SetupChannels(read), ZYe_OK);
    else
      EXPECT_EQ(scene.Channels(ActionName(state), time, read), ZYe_OK);
    return read;
  }

  std::int32_t Channel(headless::ItemIndex item, const std::string& name) const {
    std::int32_t index = -1;
    EXPECT_EQ(Item(item).ChannelLookup(name.c_str(), index), ZYe_OK) << name;
    return index;
  }

  double Number(headless::ItemIndex item, const std::string& channel, State state, double time = 0) const {
    double value = -12345;
    EXPECT_EQ(Read(state, time).Double(Item(item), Channel(item, channel), value), ZYe_OK) << channel;
    return value;
  }

  Matrix4 World(headless::ItemIndex item, State state, double time = 0) const {
    return World(item, Read(state, time));
  }

  Matrix4 World(headless::ItemIndex item, const CZyUser_ChannelRead& read) const {
    CZyUser_Locator locator;
    EXPECT_TRUE(locator.Set(Item(item).Raw()));
    Matrix4 matrix;
    EXPECT_EQ(locator.WorldTransform(read, matrix), ZYe_OK);
    return matrix;
  }

  headless::Host host;
  CZyUser_Scene scene;

 private:
  static const char* ActionName(State state) {
    if (state == State::Setup) return "setup";
    return state == State::Edit ? "edit" : nullptr;
  }
};

}  // namespace test_support
