// Imports whole models, and compares what is exported of them with what Assimp says of them.

#include "host/fourcc.h"
#include "importer/import_model.h"
#include "tests/support/assimp_pose.h"
#include "tests/support/posed_file.h"
#include "tests/support/save_runner.h"
#include "tests/support/temp_directory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using headless::ItemData;
using importer::ImportedScene;
using test_support::Point;

struct ModelRow {
  const char* file;
  // Of all meshes together; two instances of a mesh count twice.
  std::size_t meshes, polygons, points;
  std::size_t uvMaps, colorMaps;
  std::size_t joints;  // of all skins together
  std::vector<std::string> clips;
};

const ModelRow kModels[] = {
    {"dae/ConcavePolygon.dae", 1, 1, 64, 0, 0, 0, {}},
    {"dae/box_nested_animation.dae", 1, 12, 8, 1, 0, 1, {"Armature"}},
    {"dae/cameras.dae", 0, 0, 0, 0, 0, 0, {}},
    {"dae/cube_with_2UVs.DAE", 1, 12, 8, 2, 0, 0, {}},
    {"dae/library_animation_clips.dae", 1, 26, 28, 1, 1, 4, {"combinedAnim_0", "combinedAnim_1"}},
    {"dae/lights.dae", 0, 0, 0, 0, 0, 0, {}},
    {"dae/regr01.dae", 1, 172, 199, 1, 0, 0, {}},
    {"dae/skin6.dae", 1, 38, 40, 1, 0, 6, {"animation"}},
    {"dae/teapot_instancenodes.DAE", 2, 2048, 1058, 2, 0, 0, {}},
    {"fbx/animation_with_skeleton.fbx", 1, 1056, 1058, 1, 0, 15, {"Armature|ArmatureAction"}},
    {"fbx/blender_279_sausage_7400_binary.fbx",
     1,
     288,
     290,
     0,
     0,
     3,
     {"Skeleton|Base", "Skeleton|Spin", "Skeleton|Wiggle"}},
    {"fbx/blender_293_barbarian_7400_binary.fbx", 37, 3285, 1807, 37, 0, 41, {"Armature|idle"}},
    {"fbx/blender_293_embedded_textures_7400_binary.fbx", 1, 6, 8, 1, 0, 0, {}},
    {"fbx/blender_300_ngon_intersection_7400_binary.fbx", 1, 1, 5, 1, 0, 0, {}},
    {"fbx/blender_suzanne_multimaterial_7400_binary.fbx", 1, 500, 507, 1, 0, 0, {}},
    {"fbx/cubes_with_mirroring_and_pivot.fbx", 4, 210, 220, 4, 0, 0, {}},
    {"fbx/huesitos.fbx", 1, 68, 62, 1, 0, 9, {"Armature|Action"}},
    {"fbx/maya_dq_weights_7500_binary.fbx", 1, 672, 674, 1, 0, 6, {"Take 001"}},
    {"fbx/maya_game_sausage_7500_binary_combined.fbx", 1, 22, 24, 1, 0, 3, {"wiggle", "spin", "deform"}},
    {"fbx/maya_kenney_character_7700_binary.fbx", 1, 826, 804, 1, 1, 46, {"Take 001"}},
    {"fbx/maya_ngon_maze_7700_binary.fbx", 1, 789, 39204, 1, 0, 0, {}},
    {"fbx/maya_transformed_skin_7700_binary.fbx", 1, 18, 20, 1, 0, 3, {"Take 001"}},
    {"fbx/maya_uv_and_color_sets_7500_binary.fbx", 1, 6, 8, 2, 2, 0, {}},
    {"ply/Wuson.ply", 1, 3732, 2117, 1, 0, 0, {}},
    {"ply/cube.ply", 1, 6, 8, 0, 0, 0, {}},
    {"ply/cube_binary.ply", 1, 12, 8, 0, 0, 0, {}},
    {"ply/cube_uv.ply", 1, 6, 8, 1, 0, 0, {}},
    {"ply/cycloidal.ply", 1, 43368, 21384, 0, 1, 0, {}},
    {"ply/float-color.ply", 1, 1, 3, 0, 1, 0, {}},
    {"stl/Spider_binary.stl", 1, 1368, 722, 0, 0, 0, {}},
    {"stl/Wuson.stl", 1, 3732, 2117, 0, 0, 0, {}},
    {"stl/sphereWithHole.stl", 1, 285, 146, 0, 0, 0, {}},
};

std::filesystem::path ModelPath(const std::string& file) { return std::filesystem::path(VORNEL_MODELS) / file; }

class ImportedModel : public testing::TestWithParam<ModelRow> {
 protected:
  void SetUp() override {
    if (std::filesystem::exists(ModelPath(GetParam().file))) return;
    std::fprintf(stderr, "\n*** SKIPPED: no model %s ***\n\n", ModelPath(GetParam().file).c_str());
    GTEST_SKIP();
  }
  ImportedScene Import() const {
    return importer::ImportModel(ModelPath(GetParam().file), {{}, {}, textures_.Path()});
  }

  const test_support::TempDirectory textures_;
};

ModelRow Describe(const ImportedScene& imported) {
  ModelRow row = {"", 0, 0, 0, 0, 0, 0, {}};
  for (const ItemData& item : imported.scene.items) {
    if (item.type == "actionclip") row.clips.push_back(item.name);
    if (item.deformGroup) row.joints += item.deformGroup->deformers.size();
    if (!item.mesh) continue;
    ++row.meshes;
    row.polygons += item.mesh->PolygonCount();
    row.points += item.mesh->PointCount();
    for (const headless::MeshMapData& map : item.mesh->maps) {
      row.uvMaps += map.type == kMapUv;
      row.colorMaps += map.type == kMapRgba;
    }
  }
  return row;
}

TEST_P(ImportedModel, HoldsWhatTheFileHolds) {
  const ModelRow& wanted = GetParam();
  const ModelRow row = Describe(Import());
  EXPECT_EQ(row.meshes, wanted.meshes);
  EXPECT_EQ(row.polygons, wanted.polygons);
  EXPECT_EQ(row.points, wanted.points);
  EXPECT_EQ(row.uvMaps, wanted.uvMaps);
  EXPECT_EQ(row.colorMaps, wanted.colorMaps);
  EXPECT_EQ(row.joints, wanted.joints);
  EXPECT_EQ(row.clips, wanted.clips);
}

// The largest distance from one of the points to the nearest of the others.
double LargestGap(const std::vector<Point>& points, const std::vector<Point>& others) {
  double largest = 0;
  for (const Point& point : points) {
    double nearest = HUGE_VAL;
    for (const Point& other : others) nearest = std::min(nearest, test_support::Distance(point, other));
    largest = std::max(largest, nearest);
  }
  return largest;
}

double SizeOf(const std::vector<Point>& points) {
  double size = 0;
  for (const Point& point : points) size = std::max(size, test_support::Distance(point, points[0]));
  return size;
}

TEST_P(ImportedModel, StandsWhereTheFileSays) {
  ImportedScene imported = Import();
  imported.scene.userValues["sceneio.gltf.save.exportType"] = 0;
  imported.scene.userValues["sceneio.gltf.save.indicesExport"] = 1;
  const test_support::SaveRun run = test_support::RunSave(std::move(imported.scene));
  ASSERT_EQ(run.result, ZYe_OK);
  const test_support::GltfFile file = test_support::ReadGltfFile(run.output);
  const test_support::AssimpModel model(ModelPath(GetParam().file));

  // Some of the points of a large model do.
  const std::size_t stride = 1 + GetParam().points / 25;
  const std::vector<Point> rest = model.Pose("", 0, stride);
  if (rest.empty()) return;
  EXPECT_LT(LargestGap(rest, test_support::PoseFile(file, std::nullopt)), 1e-4 * SizeOf(rest));
  ASSERT_EQ(file.json.HasMember("animations") ? file.json["animations"].Size() : 0, GetParam().clips.size());
  for (std::uint32_t clip = 0; clip < GetParam().clips.size(); ++clip) {
    const rapidjson::Value& animation = file.json["animations"][clip];
    const std::vector<double> times =
        test_support::AccessorValues(file, animation["samplers"][0]["input"].GetUint());
    for (const std::size_t key : {std::size_t{0}, times.size() / 2, times.size() - 1}) {
      const std::vector<Point> posed = model.Pose(animation["name"].GetString(), times[key], stride);
      EXPECT_LT(LargestGap(posed, test_support::PoseFile(file, test_support::Moment{clip, key})),
                2e-4 * SizeOf(posed))
          << animation["name"].GetString() << " at " << times[key] << " s";
    }
  }
}

void PrintTo(const ModelRow& row, std::ostream* stream) { *stream << row.file; }

std::string NameOf(const testing::TestParamInfo<ModelRow>& info) {
  std::string name = info.param.file;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Models, ImportedModel, testing::ValuesIn(kModels), NameOf);

}  // namespace
