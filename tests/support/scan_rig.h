// Scenes made in code, and the first steps of a save run on them, with the saver's tables in the open.
#pragma once

#include "geometry/mesh_scan.h"
#include "headless/host.h"
#include "saver/node_tree.h"
#include "saver/save_run.h"
#include "tests/support/save_runner.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

// A scene with its scene item. By default everything is exported.
struct SceneBuilder {
  SceneBuilder() { Option("exportType", 0); }

  headless::ItemIndex Add(const std::string& type, const std::string& name, headless::ItemIndex parent = -1) {
    return headless::AddItem(data, type, name, parent);
  }
  headless::ItemData& Item(headless::ItemIndex item) { return data.items[static_cast<std::size_t>(item)]; }
  headless::ChannelData& Channel(headless::ItemIndex item, const std::string& name) {
    return Item(item).channels[static_cast<std::size_t>(headless::FindChannel(Item(item), name))];
  }
  void Option(const std::string& name, std::int32_t value) {
    data.userValues["sceneio.gltf.save." + name] = value;
  }
  // Gives a locator a main position.
  headless::ItemIndex Move(headless::ItemIndex locator, double x, double y, double z) {
    const headless::ItemIndex position = headless::AddTransform(data, locator, "translation", "Position");
    Channel(position, "pos.X").setup = x;
    Channel(position, "pos.Y").setup = y;
    Channel(position, "pos.Z").setup = z;
    return position;
  }
  headless::ItemIndex AddTriangle(const std::string& name, headless::ItemIndex parent = -1) {
    const headless::ItemIndex item = Add("mesh", name, parent);
    auto mesh = std::make_shared<headless::MeshData>();
    mesh->points = std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0};
    mesh->polygonStarts = std::vector<std::uint32_t>{0, 3};
    mesh->polygonPoints = std::vector<std::uint32_t>{0, 1, 2};
    Item(item).mesh = std::move(mesh);
    return item;
  }
  // A deformer that the item drives.
  headless::ItemIndex AddDeformer(const std::string& name, headless::ItemIndex driver) {
    const headless::ItemIndex deformer = Add("genInfluence", name);
    Item(deformer).deformationItem = driver;
    return deformer;
  }

  headless::SceneData data = headless::MakeScene();
};

// A save as far as a test takes it; no file is written.
class ScanRig : private SceneScanVisitor {
 public:
  explicit ScanRig(headless::SceneData scene) : host_(std::move(scene)) {
    SetZyHost(&host_);
    host_.SetLogSink([this](const headless::LogLine& line) { log_.push_back(line); });
    scene_.Set(host_.Scene());
    frame_ = std::make_unique<SceneFrame>();
    frame_->Bind(host_.Scene(), nullptr, false);
    state_ = std::make_unique<SaveState>();
    state_->frame = frame_.get();
    state_->visitor = this;
  }
  virtual ~ScanRig() {
    state_.reset();
    frame_.reset();
    SetZyHost(nullptr);
  }
  ScanRig(const ScanRig&) = delete;
  ScanRig& operator=(const ScanRig&) = delete;

  headless::Host& Host() { return host_; }
  SaveState& State() { return *state_; }
  SaveState& Scan() {
    InitSaver(*state_);
    return *state_;
  }
  SaveState& Build() {
    Scan();
    CreateNodes(*state_);
    return *state_;
  }

  IZyItem* Item(headless::ItemIndex index) const {
    CZyUser_Item item;
    scene_.ItemByIndex(kAllItems, static_cast<std::uint32_t>(index), item);
    return item.Raw();
  }
  // The first node of an item; null when it has none.
  GltfNode* Node(headless::ItemIndex index) const {
    const auto found = state_->nodesByItem.find(Item(index));
    return found == state_->nodesByItem.end() ? nullptr : found->second;
  }
  const std::vector<headless::LogLine>& Log() const { return log_; }
  std::vector<std::string> Texts(headless::LogLine::Kind kind = headless::LogLine::Kind::Info) const {
    return TextsOf(log_, kind);
  }

 private:
  void VisitPoint() override { VisitScannedPoint(*state_); }
  void VisitEdge() override {}
  void VisitPolygon() override { VisitScannedPolygon(*state_); }

  headless::Host host_;
  CZyUser_Scene scene_;
  // Both bind services of the host when they are made.
  std::unique_ptr<SceneFrame> frame_;
  std::unique_ptr<SaveState> state_;
  std::vector<headless::LogLine> log_;
};

inline const char* NameOfRaw(IZyItem* raw) {
  CZyUser_Item item;
  item.Set(raw);
  return NameOf(item);
}

template <class Items>
std::vector<std::string> NamesOf(const Items& items) {
  std::vector<std::string> names;
  for (IZyItem* item : items) names.push_back(NameOfRaw(item));
  return names;
}

// The nodes below a node as text: "A(B,C(D))" for a root A. Not for deep trees.
inline std::string TreeText(const GltfNode& parent) {
  std::string text;
  for (const GltfNode* child : parent.children) {
    if (!text.empty()) text += ",";
    text += child->name;
    if (!child->children.empty()) text += "(" + TreeText(*child) + ")";
  }
  return text;
}

}  // namespace test_support
