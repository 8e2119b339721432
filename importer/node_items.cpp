#include "importer/node_items.h"

#include "host/scene_api.h"
#include "importer/transform_math.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace importer {
namespace {

using headless::AddItem;
using headless::AddTransform;
using headless::ItemData;
using headless::ItemIndex;
using headless::SceneData;

struct TransformType {
  TransformKind kind;
  const char* type;
  const char* suffix;
  const char* channels[3];
};

// From the outermost to the innermost.
constexpr TransformType kTransformTypes[] = {
    {TransformKind::Position, "translation", " Position", {"pos.X", "pos.Y", "pos.Z"}},
    {TransformKind::Rotation, "rotation", " Rotation", {"rot.X", "rot.Y", "rot.Z"}},
    {TransformKind::Scale, "scale", " Scale", {"scl.X", "scl.Y", "scl.Z"}},
};

const Vector3& ValueOf(const Placement& placement, TransformKind kind) {
  if (kind == TransformKind::Position) return placement.position;
  return kind == TransformKind::Rotation ? placement.angles : placement.scale;
}

const char* LightType(const aiLight& light) {
  switch (light.mType) {
    case aiLightSource_DIRECTIONAL:
      return "sunLight";
    case aiLightSource_SPOT:
      return "spotLight";
    case aiLightSource_AREA:
      return "areaLight";
    case aiLightSource_AMBIENT:
      return "domeLight";
    default:
      return "pointLight";
  }
}

Vector3 Direction(const aiVector3D& v, const Vector3& otherwise) {
  const Vector3 d = {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
  const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  return length > 0 && std::isfinite(length) ? Vector3{d[0] / length, d[1] / length, d[2] / length} : otherwise;
}

// The host's camera looks along -z with y up.
Matrix4 CameraMatrix(const aiCamera& camera) {
  const Vector3 ahead = Direction(camera.mLookAt, {0, 0, -1}), up = Direction(camera.mUp, {0, 1, 0});
  Matrix4 matrix;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
    matrix(0, i) = ahead[j] * up[k] - ahead[k] * up[j];
    matrix(1, i) = up[i];
    matrix(2, i) = -ahead[i];
  }
  const aiVector3D& position = camera.mPosition;
  if (std::isfinite(position.x) && std::isfinite(position.y) && std::isfinite(position.z)) {
    matrix(3, 0) = static_cast<double>(position.x);
    matrix(3, 1) = static_cast<double>(position.y);
    matrix(3, 2) = static_cast<double>(position.z);
  }
  return Determinant(matrix) > 0 ? matrix : Matrix4();
}

class ItemMaker {
 public:
  ItemMaker(const NodePlans& plans, SceneData& scene, std::vector<std::string>& warnings)
      : plans_(plans), scene_(scene), warnings_(warnings) {
    items_.byNode.resize(plans.nodes.nodes.size());
    items_.byJoint.assign(plans.skins.joints.size(), -1);
    setupWorlds_.resize(plans.nodes.nodes.size());
    for (const PlannedNode& node : plans.nodes.nodes) ++nameUses_[node.name];
    for (const PlannedSkin& skin : plans.skins.skins) hasSkin_.insert(skin.node);
  }

  NodeItems Make() {
    for (std::size_t index = 0; index < plans_.nodes.nodes.size(); ++index) AddNode(static_cast<NodeIndex>(index));
    return std::move(items_);
  }

 private:
  const PlannedNode& Node(NodeIndex index) const { return plans_.nodes.nodes[static_cast<std::size_t>(index)]; }
  NodeItem& ItemOf(NodeIndex index) { return items_.byNode[static_cast<std::size_t>(index)]; }
  bool IsJoint(NodeIndex index) const { return plans_.skins.jointOfNode[static_cast<std::size_t>(index)] >= 0; }
  bool Moves(NodeIndex index) const { return plans_.motions.moves[static_cast<std::size_t>(index)]; }

  void AddNode(NodeIndex index);
  bool IsNeeded(NodeIndex index, bool hasMesh) const;
  // What hangs on a node that other things depend on becomes an item of its own below it.
  void AddAttachments(NodeIndex index);
  void AddStill(NodeIndex index, const std::string& type, const Matrix4& local);
  void AddMover(NodeIndex index, const std::string& type);
  void AddJoints(NodeIndex index);
  ItemIndex AddPlaced(const std::string& type, const std::string& name, ItemIndex parent, const Matrix4& local);
  ItemIndex AddVector(ItemIndex locator, const std::string& name, TransformKind kind, const Vector3& setup,
                      const Vector3& edit);
  std::string UniqueName(const std::string& name);
  Matrix4 ParentSetup(NodeIndex index) const;

  const NodePlans& plans_;
  SceneData& scene_;
  std::vector<std::string>& warnings_;
  NodeItems items_;
  std::vector<Matrix4> setupWorlds_;  // by node
  std::map<std::string, int> nameUses_;
  std::set<NodeIndex> hasSkin_;
};

// The exporter finds joints by name.
std::string ItemMaker::UniqueName(const std::string& name) {
  std::string unique = name;
  for (int number = 2; nameUses_[unique] > 0; ++number) unique = fmt::format("{} {}", name, number);
  ++nameUses_[unique];
  return unique;
}

Matrix4 ItemMaker::ParentSetup(NodeIndex index) const {
  const NodeIndex parent = Node(index).parent;
  return parent < 0 ? Matrix4() : setupWorlds_[static_cast<std::size_t>(parent)];
}

bool ItemMaker::IsNeeded(NodeIndex index, bool hasMesh) const {
  const PlannedNode& node = Node(index);
  if (hasMesh || IsJoint(index) || Moves(index) || node.camera || node.light) return true;
  // A root that does nothing, and a node that is there for a mesh that bends, which has an item of its own.
  if (node.parent < 0 && node.childCount > 0 && IsIdentity(node.local)) return false;
  return !hasSkin_.contains(index) || node.childCount > 0;
}

void ItemMaker::AddNode(NodeIndex index) {
  const PlannedNode& node = Node(index);
  setupWorlds_[static_cast<std::size_t>(index)] = node.local * ParentSetup(index);
  const bool hasMesh = !RigidMeshes(plans_.source, *node.node).empty();
  if (!IsNeeded(index, hasMesh)) return;
  const bool isAlone = !hasMesh && node.childCount == 0 && !IsJoint(index) && !Moves(index);
  if (isAlone && node.camera && !node.light) {
    AddStill(index, "camera", CameraMatrix(*node.camera) * node.local);
  } else if (isAlone && node.light && !node.camera) {
    AddStill(index, LightType(*node.light), node.local);
  } else {
    const std::string type = hasMesh ? "mesh" : "locator";
    if (Moves(index) || IsJoint(index))
      AddMover(index, type);
    else
      AddStill(index, type, node.local);
    AddAttachments(index);
  }
  if (node.camera) warnings_.push_back(fmt::format("camera \"{}\": its lens is not carried over", node.name));
  if (node.light)
    warnings_.push_back(fmt::format("light \"{}\": its color and intensity are not carried over", node.name));
}

void ItemMaker::AddAttachments(NodeIndex index) {
  const PlannedNode& node = Node(index);
  const ItemIndex holder = ItemOf(index).holder;
  if (node.camera) AddPlaced("camera", UniqueName(node.name + " camera"), holder, CameraMatrix(*node.camera));
  if (node.light) AddPlaced(LightType(*node.light), UniqueName(node.name + " light"), holder, Matrix4());
}

ItemIndex ItemMaker::AddVector(ItemIndex locator, const std::string& name, TransformKind kind,
                               const Vector3& setup, const Vector3& edit) {
  const TransformType& type = *std::find_if(std::begin(kTransformTypes), std::end(kTransformTypes),
                                            [kind](const TransformType& entry) { return entry.kind == kind; });
  const ItemIndex transform = AddTransform(scene_, locator, type.type, name + type.suffix);
  ItemData& item = scene_.items[static_cast<std::size_t>(transform)];
  for (std::size_t axis = 0; axis < 3; ++axis) {
    headless::ChannelData& channel =
        item.channels[static_cast<std::size_t>(headless::FindChannel(item, type.channels[axis]))];
    channel.setup = setup[axis];
    if (edit[axis] != setup[axis]) channel.extras.Make().edit = edit[axis];
  }
  return transform;
}

ItemIndex ItemMaker::AddPlaced(const std::string& type, const std::string& name, ItemIndex parent,
                               const Matrix4& local) {
  const ItemIndex item = AddItem(scene_, type, name, parent);
  if (IsIdentity(local)) return item;
  const std::optional<Placement> placement = Decompose(local);
  if (!placement) {
    const ItemIndex transform = AddTransform(scene_, item, "transform", name + " Transform");
    scene_.items[static_cast<std::size_t>(transform)].matrix = local;
    return item;
  }
  const Placement none;
  for (const TransformType& transform : kTransformTypes) {
    const Vector3& value = ValueOf(*placement, transform.kind);
    if (value != ValueOf(none, transform.kind)) AddVector(item, name, transform.kind, value, value);
  }
  return item;
}

void ItemMaker::AddStill(NodeIndex index, const std::string& type, const Matrix4& local) {
  const NodeIndex parent = Node(index).parent;
  const ItemIndex parentItem = parent < 0 ? -1 : ItemOf(parent).holder;
  ItemOf(index).mover = ItemOf(index).holder = AddPlaced(type, Node(index).name, parentItem, local);
}

// The setup layer shows how the node stood when meshes were bound to it, the edit layer how it rests.
void ItemMaker::AddMover(NodeIndex index, const std::string& type) {
  const PlannedNode& node = Node(index);
  const bool isSplit = plans_.motions.movesScaled[static_cast<std::size_t>(index)];
  const Placement rest =
      Moves(index) ? plans_.motions.rest[static_cast<std::size_t>(index)] : DecomposeNearly(node.local);
  ShearedPlacement setup = {{0, 0, 0}, rest};
  if (IsJoint(index)) {
    const std::ptrdiff_t joint = plans_.skins.jointOfNode[static_cast<std::size_t>(index)];
    const Matrix4& bind = plans_.skins.joints[static_cast<std::size_t>(joint)].bind;
    const Matrix4 local = bind * Inverse(ParentSetup(index));
    setupWorlds_[static_cast<std::size_t>(index)] = bind;
    if (const auto placement = Decompose(local))
      setup.placement = *placement;
    else
      setup = DecomposeSheared(local);
  }
  const ItemIndex parent = node.parent < 0 ? -1 : ItemOf(node.parent).holder;
  const std::string name = IsJoint(index) && nameUses_[node.name] > 1 ? UniqueName(node.name) : node.name;
  NodeItem& item = ItemOf(index);
  item.mover = item.holder = AddItem(scene_, isSplit ? "locator" : type, name, parent);
  if (isSplit) item.holder = AddItem(scene_, type, UniqueName(name + " scale"), item.mover);
  for (const TransformType& transform : kTransformTypes) {
    const ItemIndex locator = transform.kind == TransformKind::Scale ? item.holder : item.mover;
    item.transforms[static_cast<std::size_t>(transform.kind)] = AddVector(
        locator, name, transform.kind, ValueOf(setup.placement, transform.kind), ValueOf(rest, transform.kind));
  }
  if (setup.firstAngles != Vector3{0, 0, 0})
    AddVector(item.holder, name + " Bind", TransformKind::Rotation, setup.firstAngles, {0, 0, 0});
  if (!Moves(index) && !Decompose(node.local))
    warnings_.push_back(fmt::format("node \"{}\": the shear of its matrix is not carried over", node.name));
  AddJoints(index);
}

void ItemMaker::AddJoints(NodeIndex index) {
  if (!IsJoint(index)) return;
  const auto own = static_cast<std::size_t>(plans_.skins.jointOfNode[static_cast<std::size_t>(index)]);
  const ItemIndex holder = ItemOf(index).holder;
  items_.byJoint[own] = holder;
  const Matrix4 unbound = Inverse(plans_.skins.joints[own].bind);
  for (std::size_t joint = own + 1; joint < plans_.skins.joints.size(); ++joint) {
    if (plans_.skins.joints[joint].node != index) continue;
    // Bound once more, differently: a locator that moves with the node, and stood elsewhere then.
    const std::string name = UniqueName(Node(index).name + " bind");
    const ShearedPlacement setup = DecomposeSheared(plans_.skins.joints[joint].bind * unbound);
    const Placement none;
    items_.byJoint[joint] = AddItem(scene_, "locator", name, holder);
    for (const TransformType& transform : kTransformTypes) {
      AddVector(items_.byJoint[joint], name, transform.kind, ValueOf(setup.placement, transform.kind),
                ValueOf(none, transform.kind));
    }
    AddVector(items_.byJoint[joint], name + " First", TransformKind::Rotation, setup.firstAngles, {0, 0, 0});
  }
}

}  // namespace

std::vector<const aiMesh*> RigidMeshes(const aiScene& source, const aiNode& node) {
  std::vector<const aiMesh*> meshes;
  for (unsigned i = 0; i < node.mNumMeshes; ++i)
    if (!IsSkinned(*source.mMeshes[node.mMeshes[i]])) meshes.push_back(source.mMeshes[node.mMeshes[i]]);
  return meshes;
}

NodeItems AddNodeItems(const NodePlans& plans, SceneData& scene, std::vector<std::string>& warnings) {
  return ItemMaker(plans, scene, warnings).Make();
}

}  // namespace importer
