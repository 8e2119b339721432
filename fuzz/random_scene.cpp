#include "fuzz/random_scene.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace fuzz {
namespace {

using headless::ItemIndex;

// Names of user values with the bounds of their values.
constexpr std::pair<const char*, std::uint32_t> kOptions[] = {
    {"geometry", 2},           {"materials", 2},     {"cameras", 2},
    {"animation", 2},          {"morphMaps", 2},     {"skinnedMeshInWS", 2},
    {"tangentsBitangents", 2}, {"indicesExport", 2}, {"sampleAnimFpsMultiplier", 2},
    {"exportActionType", 3},   {"exportType", 3},
};

constexpr const char* kNodeTypes[] = {"mesh", "locator", "camera", "meshInst", "groupLocator", "spotLight"};
constexpr const char* kTransforms[] = {"translation", "rotation", "scale"};
constexpr const char* kShaders[] = {"glTFShader", "advancedMaterial", "unityShader", "unrealShader", "constant"};
constexpr const char* kEffects[] = {"baseColorGLTF", "diffColor",    "normalGLTF",
                                    "metallicGLTF",  "emissiveGLTF", "layerMask"};
constexpr const char* kShaderChannels[] = {"baseColor.R",   "metallic", "roughness",   "emissive.G",
                                           "emissivelevel", "dissAmt",  "normalscale", "aoscale"};

class SceneMaker {
 public:
  explicit SceneMaker(test_support::Choice choice) : choice_(std::move(choice)), mesh_(choice_) {}

  headless::SceneData Make() {
    for (const auto& [name, bound] : kOptions)
      if (Below(4) == 0) scene_.userValues["sceneio.gltf.save." + std::string(name)] = Signed(Below(bound));
    headless::SetChannel(At(0), "currentS", Half());
    headless::SetChannel(At(0), "currentE", Half() + 4);
    headless::SetChannel(At(0), "fps", 1.0 + Below(12));
    const std::uint32_t nodes = 1 + Below(8);
    for (std::uint32_t i = 0; i < nodes; ++i) AddNode();
    if (Below(2) == 0) AddMaterials();
    if (Below(3) == 0) AddDeformGroup();
    if (Below(3) == 0) AddLinks();
    if (Below(3) == 0) AddClips();
    for (const ItemIndex node : nodes_)
      if (Below(3) == 0) scene_.selection.push_back(node);
    return std::move(scene_);
  }

 private:
  std::uint32_t Below(std::uint32_t bound) { return choice_(bound); }
  static std::int32_t Signed(std::uint32_t value) { return static_cast<std::int32_t>(value); }
  template <class List>
  auto& OneOf(List& list) {
    return *(std::begin(list) + Below(static_cast<std::uint32_t>(std::size(list))));
  }
  // Small and exact.
  double Half() { return (static_cast<int>(Below(9)) - 4) / 2.0; }
  double NotZero() {
    const double half = Half();
    return half == 0 ? 1 : half;
  }
  headless::ItemData& At(ItemIndex item) { return scene_.items[static_cast<std::size_t>(item)]; }
  std::string NewName(const char* type) { return type + std::to_string(scene_.items.size()); }

  void AddNode() {
    const char* type = OneOf(kNodeTypes);
    const ItemIndex parent = nodes_.empty() || Below(3) == 0 ? -1 : OneOf(nodes_);
    const ItemIndex node = headless::AddItem(scene_, type, NewName(type), parent);
    if (std::string(type) == "mesh") {
      At(node).mesh = std::make_shared<const headless::MeshData>(mesh_.Make());
      meshes_.push_back(node);
    }
    if (std::string(type) == "meshInst" && !meshes_.empty()) At(node).instanceSource = OneOf(meshes_);
    const std::uint32_t transforms = Below(4);
    for (std::uint32_t i = 0; i < transforms; ++i) AddTransform(node);
    if (Below(8) == 0) AddWorld(node);
    if (Below(16) == 0) At(node).extras.Make().packages.push_back("ik.joint");
    nodes_.push_back(node);
  }

  // A scale that is nowhere zero, so that every matrix can be inverted.
  void AddTransform(ItemIndex node) {
    const std::string type = OneOf(kTransforms);
    const ItemIndex item = headless::AddTransform(scene_, node, type, NewName(type.c_str()));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      headless::ChannelData& channel = At(item).channels[axis];
      channel.setup = type == "scale" ? NotZero() : Half();
      if (Below(4) == 0) channel.extras.Make().envelope = MakeKeys(type == "scale");
    }
    transforms_.push_back(item);
  }

  headless::EnvelopeData MakeKeys(bool isScale) {
    headless::EnvelopeData envelope;
    envelope.keys.resize(1 + Below(3));
    double time = Half();
    for (headless::KeyData& key : envelope.keys) {
      key.time = time;
      key.value = isScale ? 1.0 + Below(3) : Half();
      key.interpolation = static_cast<headless::Interpolation>(Below(isScale ? 2 : 3));
      key.slopeIn = Half();
      key.slopeOut = Half();
      time += 0.5 + Below(3);
    }
    // Going on in a line, a scale may come to zero.
    if (!isScale) envelope.before = static_cast<headless::Extrapolation>(Below(4));
    envelope.after = isScale ? headless::Extrapolation::Repeat : static_cast<headless::Extrapolation>(Below(4));
    return envelope;
  }

  Matrix4 MakeMatrix() {
    Matrix4 matrix;
    for (const std::size_t diagonal : {0u, 5u, 10u}) matrix.m[diagonal] = NotZero();
    for (const std::size_t place : {12u, 13u, 14u}) matrix.m[place] = Half();
    return matrix;
  }

  void AddWorld(ItemIndex node) {
    headless::RecordedWorld& world = At(node).world.emplace();
    world.bind = MakeMatrix();
    const std::uint32_t keys = Below(3);
    for (std::uint32_t key = 0; key < keys; ++key) world.keys.push_back({static_cast<double>(key), MakeMatrix()});
  }

  void AddMaterials() {
    const ItemIndex render = headless::AddItem(scene_, "polyRender", NewName("polyRender"));
    for (const char* tag : {"Red", "Green", "Blue"}) {
      if (Below(4) == 0) continue;
      const ItemIndex mask = headless::AddItem(scene_, "mask", NewName("mask"), render);
      headless::SetChannel(At(mask), "ptag", std::string(tag));
      headless::SetChannel(At(mask), "ptyp", std::string("Material"));
      const std::uint32_t layers = Below(4);
      for (std::uint32_t layer = 0; layer < layers; ++layer) AddLayer(mask);
    }
  }

  void AddLayer(ItemIndex mask) {
    if (Below(2) == 0) {
      const ItemIndex image = headless::AddItem(scene_, "imageMap", NewName("imageMap"), mask);
      headless::SetChannel(At(image), "effect", std::string(OneOf(kEffects)));
      At(image).imagePath = Below(2) == 0 ? "red.png" : "blue.jpg";
      if (Below(2) == 0) {
        const ItemIndex locator = headless::AddItem(scene_, "txtrLocator", NewName("txtrLocator"));
        headless::SetChannel(At(locator), "wrapU", Half());
        At(image).textureLocator = locator;
      }
      return;
    }
    const char* type = OneOf(kShaders);
    const ItemIndex shader = headless::AddItem(scene_, type, NewName(type), mask);
    for (const char* channel : kShaderChannels)
      if (Below(3) == 0) headless::SetChannel(At(shader), channel, Below(9) / 8.0);
    if (Below(8) == 0) headless::SetChannel(At(shader), "enable", 0);
  }

  void AddDeformGroup() {
    if (meshes_.empty()) return;
    const ItemIndex group = headless::AddItem(scene_, "deformGroup", NewName("deformGroup"));
    headless::DeformGroupData data;
    const std::uint32_t joints = 1 + Below(5);
    for (std::uint32_t i = 0; i < joints; ++i) {
      data.deformers.push_back(headless::AddItem(scene_, "genInfluence", NewName("genInfluence")));
      At(data.deformers.back()).deformationItem = OneOf(nodes_);
    }
    data.meshes = {OneOf(meshes_)};
    headless::RecordedInfluences influences;
    std::vector<std::uint32_t> starts = {0}, deformers;
    std::vector<float> weights;
    const std::uint32_t points = At(data.meshes[0]).mesh->PointCount();
    for (std::uint32_t point = 0; point < points; ++point) {
      const std::uint32_t count = std::min(Below(6), points);
      for (std::uint32_t i = 0; i < count; ++i) {
        deformers.push_back(Below(joints));
        weights.push_back(static_cast<float>(Below(5)) / 4);
      }
      starts.push_back(static_cast<std::uint32_t>(deformers.size()));
    }
    data.influences = {headless::RecordedInfluences{std::move(starts), std::move(deformers), std::move(weights)}};
    At(group).deformGroup = std::move(data);
  }

  // From a transform to a later one, so that none drives itself; never to a scale.
  void AddLinks() {
    for (std::size_t i = 0; i + 1 < transforms_.size(); ++i) {
      const ItemIndex to = transforms_[i + 1];
      if (Below(2) == 0 || At(to).type == "scale") continue;
      const auto axis = [&] { return Signed(Below(3)); };
      scene_.channelLinks.push_back({{transforms_[i], axis()}, {to, axis()}, Half(), Half()});
    }
  }

  void AddClips() {
    const std::uint32_t clips = 1 + Below(3);
    const std::uint32_t active = Below(clips);
    const ItemIndex actor = headless::AddItem(scene_, "group", NewName("group"));
    for (const ItemIndex node : nodes_)
      if (Below(2) == 0) At(actor).group->items.push_back(node);
    for (std::uint32_t i = 0; i < clips; ++i) {
      const ItemIndex item = headless::AddItem(scene_, "actionclip", NewName("actionclip"), actor);
      headless::ClipData clip;
      clip.enabled = Below(4) != 0;
      clip.active = i == active;
      for (const ItemIndex transform : transforms_)
        if (Below(2) == 0)
          clip.channels.emplace_back(headless::ChannelRef{transform, Signed(Below(3))},
                                     MakeKeys(At(transform).type == "scale"));
      At(item).clip = std::move(clip);
    }
  }

  test_support::Choice choice_;
  test_support::RandomMesh mesh_;
  headless::SceneData scene_ = headless::MakeScene();
  std::vector<ItemIndex> nodes_, meshes_, transforms_;
};

}  // namespace

test_support::Choice ChooseByBytes(const std::uint8_t* data, std::size_t size) {
  // Copies of a choice go on where the others stand.
  const auto rest = std::make_shared<std::span<const std::uint8_t>>(data, size);
  return [rest](std::uint32_t bound) {
    std::uint32_t value = 0;
    for (int byte = bound > 256 ? 2 : 1; byte > 0 && !rest->empty(); --byte) {
      value = value << 8 | rest->front();
      *rest = rest->subspan(1);
    }
    return value % bound;
  };
}

headless::SceneData MakeRandomScene(test_support::Choice choice, const std::string& directory) {
  headless::SceneData scene = SceneMaker(std::move(choice)).Make();
  scene.directory = directory;
  return scene;
}

}  // namespace fuzz
