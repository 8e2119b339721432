// The scene, as the host hands it out.
#pragma once

#include "headless/graph.h"
#include "headless/host_state.h"
#include "headless/permanent_object.h"

#include <map>
#include <memory>
#include <string>

namespace headless {

class SceneObject final : public PermanentObject<IZyScene> {
 public:
  explicit SceneObject(HostState& host) : host_(host) {}

  zyresult Channels(const char* actionName, double time, IZyObject*& read) override;
  zyresult SetupChannels(IZyObject*& read) override;
  zyresult ItemCount(std::uint32_t type, std::uint32_t& count) override;
  zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) override;
  zyresult AnyItemOfType(std::uint32_t type, IZyObject*& item) override { return ItemByIndex(type, 0, item); }
  zyresult GraphLookup(const char* name, IZyObject*& graph) override;
  zyresult RenderCameraCount(std::uint32_t& count) override;
  zyresult RenderCameraByIndex(std::uint32_t index, IZyObject*& item) override;

 private:
  HostState& host_;
  std::map<std::string, std::unique_ptr<Graph>> graphs_;  // those looked up so far
};

}  // namespace headless
