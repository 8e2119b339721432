#include "tests/support/posed_file.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace test_support {
namespace {

using rapidjson::Value;

// A node's local transform, parts of it replaced by an animation.
struct Local {
  std::array<double, 3> translation = {0, 0, 0}, scale = {1, 1, 1};
  std::array<double, 4> rotation = {0, 0, 0, 1};
  Matrix4 matrix;
  bool useMatrix = false;

  explicit Local(const Value& node) {
    Read(node, "translation", translation);
    Read(node, "rotation", rotation);
    Read(node, "scale", scale);
    Read(node, "matrix", matrix.m);
    useMatrix = node.HasMember("matrix");
  }
  template <std::size_t size>
  static void Read(const Value& node, const char* key, std::array<double, size>& values) {
    if (!node.HasMember(key)) return;
    for (std::size_t place = 0; place < size; ++place)
      values[place] = node[key][static_cast<rapidjson::SizeType>(place)].GetDouble();
  }
  void Replace(const std::string& path, const double* values) {
    if (useMatrix) throw std::runtime_error("an animated node must not have a matrix");
    if (path == "translation") std::copy_n(values, 3, translation.begin());
    if (path == "rotation") std::copy_n(values, 4, rotation.begin());
    if (path == "scale") std::copy_n(values, 3, scale.begin());
  }
  Matrix4 Compose() const {
    if (useMatrix) return matrix;
    const auto [x, y, z, w] = rotation;
    Matrix4 out;
    const double rows[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
                               {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
                               {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
    for (std::size_t row = 0; row < 3; ++row)
      for (std::size_t column = 0; column < 3; ++column) out(row, column) = scale[row] * rows[row][column];
    for (std::size_t column = 0; column < 3; ++column) out(3, column) = translation[column];
    return out;
  }
};

}  // namespace

Point Transformed(const Point& point, const Matrix4& matrix) {
  Point out;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    out[axis] =
        point[0] * matrix(0, axis) + point[1] * matrix(1, axis) + point[2] * matrix(2, axis) + matrix(3, axis);
  }
  return out;
}

double Distance(const Point& a, const Point& b) { return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]); }

Point Triple(const std::vector<double>& values, std::size_t place) {
  return {values[3 * place], values[3 * place + 1], values[3 * place + 2]};
}

std::vector<Matrix4> PoseNodes(const GltfFile& file, const std::optional<Moment>& moment) {
  std::vector<Local> locals;
  for (const Value& node : file.json["nodes"].GetArray()) locals.emplace_back(node);
  if (moment) {
    const Value& animation = file.json["animations"][moment->animation];
    for (const Value& channel : animation["channels"].GetArray()) {
      const Value& target = channel["target"];
      const Value& sampler = animation["samplers"][channel["sampler"].GetUint()];
      const std::string path = target["path"].GetString();
      const std::vector<double> values = AccessorValues(file, sampler["output"].GetUint());
      locals[target["node"].GetUint()].Replace(path, values.data() + moment->key * (path == "rotation" ? 4 : 3));
    }
  }
  // Parents stand before their children.
  std::vector<Matrix4> worlds;
  for (const Local& local : locals) worlds.push_back(local.Compose());
  for (rapidjson::SizeType parent = 0; parent < worlds.size(); ++parent) {
    const Value& node = file.json["nodes"][parent];
    if (!node.HasMember("children")) continue;
    for (const Value& child : node["children"].GetArray())
      worlds[child.GetUint()] = worlds[child.GetUint()] * worlds[parent];
  }
  return worlds;
}

PrimitiveVertices ReadVertices(const GltfFile& file, const Value& primitive) {
  const auto read = [&](const char* name) {
    const Value& attributes = primitive["attributes"];
    return attributes.HasMember(name) ? AccessorValues(file, attributes[name].GetUint()) : std::vector<double>();
  };
  return {read("POSITION"), read("JOINTS_0"), read("WEIGHTS_0")};
}

std::vector<Point> PoseVertices(const GltfFile& file, const PrimitiveVertices& vertices, const Value& skin,
                                const std::vector<Matrix4>& worlds) {
  const std::vector<double> inverse = AccessorValues(file, skin["inverseBindMatrices"].GetUint());
  std::vector<Matrix4> moves;
  for (rapidjson::SizeType joint = 0; joint < skin["joints"].Size(); ++joint) {
    Matrix4 bind;
    std::copy_n(inverse.begin() + static_cast<std::ptrdiff_t>(16 * joint), 16, bind.m.begin());
    moves.push_back(bind * worlds[skin["joints"][joint].GetUint()]);
  }
  std::vector<Point> posed;
  for (std::size_t vertex = 0; vertex < vertices.positions.size() / 3; ++vertex) {
    Point point = {0, 0, 0};
    for (std::size_t place = 4 * vertex; place < 4 * vertex + 4; ++place) {
      const Point moved =
          Transformed(Triple(vertices.positions, vertex), moves[static_cast<std::size_t>(vertices.joints[place])]);
      for (std::size_t axis = 0; axis < 3; ++axis) point[axis] += vertices.weights[place] * moved[axis];
    }
    posed.push_back(point);
  }
  return posed;
}

std::vector<Point> PoseFile(const GltfFile& file, const std::optional<Moment>& moment) {
  const std::vector<Matrix4> worlds = PoseNodes(file, moment);
  std::vector<Point> points;
  for (rapidjson::SizeType index = 0; index < worlds.size(); ++index) {
    const Value& node = file.json["nodes"][index];
    if (!node.HasMember("mesh")) continue;
    for (const auto& primitive : file.json["meshes"][node["mesh"].GetUint()]["primitives"].GetArray()) {
      const auto vertices = ReadVertices(file, primitive);
      if (node.HasMember("skin")) {
        const auto posed = PoseVertices(file, vertices, file.json["skins"][node["skin"].GetUint()], worlds);
        points.insert(points.end(), posed.begin(), posed.end());
        continue;
      }
      for (std::size_t i = 0; i < vertices.positions.size() / 3; ++i)
        points.push_back(Transformed(Triple(vertices.positions, i), worlds[index]));
    }
  }
  return points;
}

}  // namespace test_support
