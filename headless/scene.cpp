#include "headless/scene.h"

#include "headless/channel_read.h"

#include <string_view>

namespace headless {

zyresult SceneObject::Channels(const char* actionName, double time, IZyObject*& read) {
  ReadState state{Layer::Edit, Evaluation::Driven, time};
  if (actionName) {
    const std::string_view name = actionName;
    if (name != "setup" && name != "edit") return ZYe_FAILED;
    state = {name == "setup" ? Layer::Setup : Layer::Edit, Evaluation::Stored, time};
  }
  host_.demand.reads.Add();
  read = new ChannelRead(host_, state);
  return ZYe_OK;
}

zyresult SceneObject::SetupChannels(IZyObject*& read) {
  read = new ChannelRead(host_, {Layer::Setup, Evaluation::Driven, 0});
  return ZYe_OK;
}

zyresult SceneObject::ItemCount(std::uint32_t type, std::uint32_t& count) {
  const auto* items = host_.index.ItemsOfType(type);
  if (!items) return ZYe_FAILED;
  count = static_cast<std::uint32_t>(items->size());
  return ZYe_OK;
}

zyresult SceneObject::ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) {
  const auto* items = host_.index.ItemsOfType(type);
  return items && index < items->size() ? host_.Give((*items)[index], item) : ZYe_FAILED;
}

zyresult SceneObject::GraphLookup(const char* name, IZyObject*& graph) {
  if (!name) return ZYe_FAILED;
  const auto links = host_.scene.graphs.find(name);
  if (links == host_.scene.graphs.end()) return ZYe_FAILED;
  const bool isChannelGraph = links->first == "chanLinks";
  std::unique_ptr<Graph>& made = graphs_[name];
  if (!made)
    made =
        std::make_unique<Graph>(host_, links->second, isChannelGraph ? ChannelLinks::Scene : ChannelLinks::None);
  graph = static_cast<IZyItemGraph*>(made.get());
  graph->AddRef();
  return ZYe_OK;
}

zyresult SceneObject::RenderCameraCount(std::uint32_t& count) {
  count = static_cast<std::uint32_t>(host_.scene.renderCameras.size());
  return ZYe_OK;
}

zyresult SceneObject::RenderCameraByIndex(std::uint32_t index, IZyObject*& item) {
  const auto& cameras = host_.scene.renderCameras;
  return index < cameras.size() ? host_.Give(cameras[index], item) : ZYe_FAILED;
}

}  // namespace headless
