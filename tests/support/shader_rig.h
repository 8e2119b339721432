// Shader trees in the headless host, and the material step alone run on them.
#pragma once

#include "headless/host.h"
#include "headless/scene_data.h"
#include "materials/create_materials.h"
#include "materials/tag_resolver.h"
#include "saver/item_scan.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using ChannelValues = std::vector<std::pair<std::string, headless::ChannelValue>>;

// Layers stand in the tree in the order in which they are added: the first child has the lowest index.
struct ShaderScene {
  headless::ItemIndex Add(const std::string& type, const std::string& name, headless::ItemIndex parent,
                          const ChannelValues& channels = {}) {
    const headless::ItemIndex index = headless::AddItem(data, type, name, parent);
    Set(index, "enable", 1);
    for (const auto& [channel, value] : channels) Set(index, channel, value);
    return index;
  }
  headless::ItemIndex AddMask(const std::string& tag, headless::ItemIndex parent = -1) {
    return Add("mask", "mask " + tag, parent, {{"ptag", tag}, {"ptyp", std::string("Material")}});
  }
  headless::ItemIndex AddImage(const std::string& effect, const std::string& name, headless::ItemIndex parent,
                               const std::string& path) {
    const headless::ItemIndex index = Add("imageMap", name, parent, {{"effect", effect}});
    data.items[static_cast<std::size_t>(index)].imagePath = path;
    return index;
  }
  headless::ItemIndex AddLocator(headless::ItemIndex image, const ChannelValues& channels) {
    const headless::ItemIndex index = Add("txtrLocator", "locator", -1, channels);
    Item(image).textureLocator = index;
    return index;
  }

  headless::ItemData& Item(headless::ItemIndex index) { return data.items[static_cast<std::size_t>(index)]; }
  void Set(headless::ItemIndex index, const std::string& channel, headless::ChannelValue value) {
    headless::SetChannel(Item(index), channel, std::move(value));
  }
  headless::ChannelData& Channel(headless::ItemIndex index, const std::string& name) {
    return Item(index).channels[static_cast<std::size_t>(headless::FindChannel(Item(index), name))];
  }
  void RemoveChannel(headless::ItemIndex index, const std::string& name) {
    std::erase_if(Item(index).channels, [&](const auto& channel) { return channel.name == name; });
  }

  headless::SceneData data;
};

// A save that has come as far as the materials, with the masks of the scene known by their tags.
class MaterialRun {
 public:
  explicit MaterialRun(const ShaderScene& scene) : host_(scene.data) {
    host_.SetLogSink([this](const headless::LogLine& line) {
      static constexpr const char* kKinds[] = {"setup|", "info|", "warning|", "error|", "", ""};
      log_.push_back(kKinds[static_cast<std::size_t>(line.kind)] + line.text);
    });
    SetZyHost(&host_);
    frame_ = std::make_unique<SceneFrame>();
    frame_->Bind(host_.Scene(), nullptr, false);
    state_ = std::make_unique<SaveState>();
    state_->frame = frame_.get();
    state_->scene.Set(host_.Scene());
    state_->scene.Channels("setup", 0, state_->chanSetup);
    state_->scene.Channels("edit", 0, state_->chanEdit);
    state_->typeCodes = LookupItemTypes(state_->sceneService);
    state_->document = std::make_unique<GltfDocument>();
    state_->gltfScene = state_->document->CreateScene();
    FindMasks();
    state_->log.Setup("start");
    log_.clear();
  }
  ~MaterialRun() {
    state_.reset();
    frame_.reset();
    SetZyHost(nullptr);
  }

  SaveState& State() { return *state_; }
  GltfMaterial& Resolve(const std::string& tag) { return *ResolvePolyTag(*state_, tag); }
  // The messages since the last call, each behind its kind: "info|text".
  std::vector<std::string> TakeLog() {
    host_.FlushLog();
    return std::exchange(log_, {});
  }
  // Of them the warnings and errors.
  std::vector<std::string> TakeWarnings() {
    std::vector<std::string> lines = TakeLog();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("info|"); });
    return lines;
  }

 private:
  void FindMasks() {
    frame_->StartScan("mask");
    while (frame_->NextItem()) {
      CZyUser_Item mask;
      frame_->GetItem(mask);
      ScanItem(*state_, mask);
    }
  }

  headless::Host host_;
  // These bind their services when they are made.
  std::unique_ptr<SceneFrame> frame_;
  std::unique_ptr<SaveState> state_;
  std::vector<std::string> log_;
};
