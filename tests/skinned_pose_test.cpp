// Poses a written file as a viewer does, and compares it with the scene it came from.

#include "tests/support/glb_reader.h"
#include "tests/support/motion_scene.h"
#include "tests/support/posed_file.h"
#include "tests/support/save_runner.h"

#include <gtest/gtest.h>

namespace {

using namespace motion;
using rapidjson::Value;
using namespace test_support;

constexpr std::uint32_t kColumns = 6;

// A strip of 2 x 6 points along X with a joint below every second column, all of it moved and turned.
struct Strip {
  SceneData scene;
  ItemIndex body = -1;
  std::vector<Mover> joints;
  std::vector<Point> points;
  std::vector<std::vector<double>> weights;  // per point and joint

  Strip() {
    AddSceneItem(scene, 0, 1, 4);
    const Mover mover = AddMover(scene, "body", -1, "mesh");
    body = mover.item;
    Place(scene, mover.position, 5, -2, 1);
    Place(scene, mover.rotation, 0.2, 0.5, -0.3);
    AddJoints();
    AddMesh();
  }
  void AddJoints() {
    for (int place = 0; place < 3; ++place) {
      const ItemIndex parent = joints.empty() ? -1 : joints.back().item;
      joints.push_back(AddMover(scene, "j" + std::to_string(place), parent));
      Place(scene, joints.back().position, place == 0 ? 4 : 2, 0.25, 0.5);
      Place(scene, joints.back().rotation, 0.1, 0.2 * place, 0.3);
    }
    Key(scene, joints[0].rotation, Axis::Z, Line(0, 0.3, 1, 1.2));
    Key(scene, joints[1].position, Axis::Y, Line(0, 0.25, 1, 1));
    Key(scene, joints[2].rotation, Axis::X, Line(0, 0.1, 1, -2));
    Key(scene, joints[2].rotation, Axis::Y, Line(0, 0.4, 1, 1));
  }
  void AddMesh() {
    auto mesh = std::make_shared<headless::MeshData>();
    std::vector<float> coordinates;
    std::vector<std::uint32_t> corners, starts = {0}, influenceStarts = {0}, deformers;
    std::vector<float> values;
    for (std::uint32_t point = 0; point < 2 * kColumns; ++point) {
      const std::uint32_t column = point % kColumns;
      points.push_back({static_cast<double>(column), point < kColumns ? 0.0 : 1.0, 0.0});
      for (const double number : points.back()) coordinates.push_back(static_cast<float>(number));
      const std::uint32_t joint = std::min(column / 2, 2u);
      weights.emplace_back(3, 0.0);
      // Dyadic shares are exact in 32 bits.
      const auto give = [&](std::uint32_t deformer, double share) {
        weights.back()[deformer] += share;
        deformers.push_back(deformer);
        values.push_back(static_cast<float>(share));
      };
      give(joint, column % 2 == 0 ? 1.0 : 0.75);
      if (column % 2 == 1) give((joint + 1) % 3, 0.25);
      influenceStarts.push_back(static_cast<std::uint32_t>(deformers.size()));
    }
    for (std::uint32_t column = 0; column + 1 < kColumns; ++column) {
      corners.insert(corners.end(), {column, column + 1, kColumns + column + 1, kColumns + column});
      starts.push_back(static_cast<std::uint32_t>(corners.size()));
    }
    mesh->points = std::move(coordinates);
    mesh->material.texts = {"Strip"};  // polygons without a material are not written
    mesh->material.perPolygon = std::vector<std::uint32_t>(kColumns - 1, 0);
    mesh->polygonStarts = std::move(starts);
    mesh->polygonPoints = std::move(corners);
    At(scene, body).mesh = std::move(mesh);
    AddGroup({std::move(influenceStarts), std::move(deformers), std::move(values)});
  }
  void AddGroup(headless::RecordedInfluences influences) {
    const ItemIndex group = headless::AddItem(scene, "deformGroup", "Strip");
    std::vector<ItemIndex> deformers;
    for (const Mover& joint : joints) {
      deformers.push_back(headless::AddItem(scene, "genInfluence", "influence"));
      At(scene, deformers.back()).deformationItem = joint.item;
    }
    auto& data = *At(scene, group).deformGroup;
    data.meshes = {body};
    data.deformers = std::move(deformers);
    data.influences = {std::move(influences)};
  }
};

// The scene's own pose, from the host's world matrices.
class HostPose {
 public:
  explicit HostPose(const Strip& strip) : strip_(strip), host_(strip.scene) {
    scene_.Set(host_.Scene());
    scene_.SetupChannels(bind_);
  }
  Point BindPoint(std::size_t point) const { return Transformed(strip_.points[point], World(strip_.body, bind_)); }
  Point PosedPoint(std::size_t point, double time) const {
    CZyUser_ChannelRead read;
    scene_.Channels(nullptr, time, read);
    Point posed = {0, 0, 0};
    for (std::size_t joint = 0; joint < strip_.joints.size(); ++joint) {
      const ItemIndex item = strip_.joints[joint].item;
      const Point moved = Transformed(BindPoint(point), Inverse(World(item, bind_)) * World(item, read));
      for (std::size_t axis = 0; axis < 3; ++axis) posed[axis] += strip_.weights[point][joint] * moved[axis];
    }
    return posed;
  }

 private:
  Matrix4 World(ItemIndex index, const CZyUser_ChannelRead& read) const {
    CZyUser_Item item;
    scene_.ItemByIndex(kAllItems, static_cast<std::uint32_t>(index), item);
    CZyUser_Locator locator;
    locator.Set(item.Raw());
    Matrix4 matrix;
    EXPECT_EQ(locator.WorldTransform(read, matrix), ZYe_OK);
    return matrix;
  }

  const Strip& strip_;
  headless::Host host_;
  CZyUser_Scene scene_;
  CZyUser_ChannelRead bind_;
};

TEST(SkinnedPose, FollowsTheScene) {
  const Strip strip;
  const HostPose host(strip);
  const SaveRun run = RunSave(strip.scene);
  ASSERT_EQ(run.result, ZYe_OK);
  const GltfFile file = ReadGltfFile(run.output);

  const auto vertices = ReadVertices(file, file.json["meshes"][0]["primitives"][0]);
  const Value& sampler = file.json["animations"][0]["samplers"][0];
  const std::vector<double> times = AccessorValues(file, sampler["input"].GetUint());
  ASSERT_EQ(vertices.positions.size(), 3u * 2 * kColumns);

  for (std::size_t key = 0; key < times.size(); ++key) {
    SCOPED_TRACE(times[key]);
    const std::vector<Matrix4> worlds = PoseNodes(file, Moment{0, key});
    const std::vector<Point> posed = PoseVertices(file, vertices, file.json["skins"][0], worlds);
    for (std::size_t vertex = 0; vertex < posed.size(); ++vertex) {
      const Point bound = Triple(vertices.positions, vertex);
      std::size_t point = 0;
      while (point < strip.points.size() && Distance(host.BindPoint(point), bound) > 1e-5) ++point;
      ASSERT_LT(point, strip.points.size()) << "vertex " << vertex << " is not at a point in world space";
      EXPECT_LT(Distance(posed[vertex], host.PosedPoint(point, times[key])), 1e-5) << "point " << point;
    }
  }
}

TEST(SkinnedPose, PositionsStayInObjectSpaceWhenAsked) {
  Strip strip;
  strip.scene.userValues["sceneio.gltf.save.skinnedMeshInWS"] = 0;
  const SaveRun run = RunSave(strip.scene);
  const GltfFile file = ReadGltfFile(run.output);
  const Value& attributes = file.json["meshes"][0]["primitives"][0]["attributes"];
  const std::vector<double> positions = AccessorValues(file, attributes["POSITION"].GetUint());
  ASSERT_EQ(positions.size(), 3 * strip.points.size());
  for (std::size_t vertex = 0; vertex < strip.points.size(); ++vertex) {
    double nearest = 1;
    for (const Point& point : strip.points)
      nearest = std::min(nearest, Distance(point, Triple(positions, vertex)));
    EXPECT_EQ(nearest, 0);
  }
  EXPECT_EQ(file.json["skins"].Size(), 1u);
}

TEST(SkinnedPose, SkinsHangOnAnOptionNamedForMorphs) {
  for (const std::int32_t option : {0, 2}) {
    Strip strip;
    strip.scene.userValues["sceneio.gltf.save.morphMaps"] = option;
    const SaveRun run = RunSave(strip.scene);
    const GltfFile file = ReadGltfFile(run.output);
    EXPECT_FALSE(file.json.HasMember("skins"));
    EXPECT_EQ(file.text.find("JOINTS_0"), std::string::npos);
  }
}

}  // namespace
