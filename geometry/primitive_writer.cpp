// One entry of polygonsByTag becomes one primitive, with vertices, blocks and accessors of its own: nothing is
// shared between the primitives of a mesh. Each wedge that its triangles show makes one vertex.
#include "document/buffers.h"
#include "document/write_materials.h"
#include "document/write_primitive.h"
#include "geometry/vertex_arrays.h"
#include "geometry/vertex_fold.h"
#include "saver/log_message.h"

namespace {

// Skinned meshes may be wanted in world space.
const Matrix4* ToWorld(const GltfDocument& document, const GltfMesh& mesh) {
  const bool move = !mesh.skins.empty() && document.skinnedMeshInWS == 1 && mesh.node;
  return move ? &mesh.node->matrix : nullptr;
}

std::array<double, 3> Widened(const std::array<float, 3>& numbers) { return {numbers[0], numbers[1], numbers[2]}; }

std::uint32_t AddPositions(GltfDocument& document, std::vector<float> positions) {
  const auto vertices = static_cast<std::uint32_t>(positions.size() / 3);
  if (vertices == 0) return AddFloats(document, std::move(positions), GltfAccessorType::Vec3, 0);
  const Bounds bounds = BoundsOf(positions);
  return AddFloats(document, std::move(positions), GltfAccessorType::Vec3, vertices, Widened(bounds.min),
                   Widened(bounds.max));
}

// Adds attributes in the order in which they are called for, which is that of their data in the buffer.
class AttributeWriter {
 public:
  AttributeWriter(GltfDocument& document, VertexWedges wedges) : document_(document), wedges_(wedges) {}

  void Add(std::string name, std::uint32_t accessor) { accessors_.emplace_back(std::move(name), accessor); }
  void AddNumbered(const char* prefix, std::size_t n, std::uint32_t accessor) {
    Add(prefix + std::to_string(n), accessor);
  }
  void AddFloatData(const char* name, std::vector<float> values, GltfAccessorType type) {
    Add(name, AddFloats(document_, std::move(values), type, Vertices()));
  }
  std::uint32_t Vertices() const { return static_cast<std::uint32_t>(wedges_.size()); }
  void Write(JsonText& text) const {
    text.StartObject();
    for (const auto& [name, accessor] : accessors_) text.Member(name, accessor);
    text.EndObject();
  }

 private:
  GltfDocument& document_;
  VertexWedges wedges_;
  std::vector<std::pair<std::string, std::uint32_t>> accessors_;
};

void AddTangents(GltfDocument& document, AttributeWriter& attributes, const GltfMesh& mesh, VertexWedges wedges,
                 const std::vector<float>& normals) {
  VertexTangents tangents = GatherTangents(*mesh.tangentMaps.front(), wedges, normals);
  if (!tangents.isOrthonormal && document.log)
    document.log->Warning(
        "Tangent basis is not orthonormal. External previewers could have unexpected surface results.");
  attributes.AddFloatData("TANGENT", std::move(tangents.values), GltfAccessorType::Vec4);
}

void AddSkins(GltfDocument& document, AttributeWriter& attributes, const GltfMesh& mesh, VertexWedges wedges) {
  for (std::size_t n = 0; n < mesh.skins.size(); ++n)
    attributes.AddNumbered("JOINTS_", n,
                           AddShorts(document, GatherJoints(mesh, *mesh.skins[n], wedges), GltfAccessorType::Vec4,
                                     attributes.Vertices()));
  for (std::size_t n = 0; n < mesh.skins.size(); ++n)
    attributes.AddNumbered("WEIGHTS_", n,
                           AddFloats(document, GatherWeights(mesh, *mesh.skins[n], wedges), GltfAccessorType::Vec4,
                                     attributes.Vertices()));
}

}  // namespace

void WritePrimitive(GltfDocument& document, const GltfMesh& mesh, const TagTriangles& entry,
                    JsonText& primitives) {
  VertexFold fold = FoldCorners(entry.second, mesh.wedgeIndex, mesh.positionIndex.size());
  const VertexWedges wedges = fold.wedges;
  AttributeWriter attributes(document, wedges);
  attributes.Add("POSITION", AddPositions(document, GatherPositions(mesh, wedges, ToWorld(document, mesh))));
  const std::uint32_t indices = AddIndices(document, std::move(fold.indices));
  std::vector<float> normals = GatherNormals(mesh, wedges);
  std::vector<float> tangentNormals;
  if (!mesh.tangentMaps.empty()) tangentNormals = normals;
  attributes.AddFloatData("NORMAL", std::move(normals), GltfAccessorType::Vec3);
  for (std::size_t n = 0; n < mesh.colorMaps.size(); ++n)
    attributes.AddNumbered("COLOR_", n,
                           AddFloats(document, GatherColors(*mesh.colorMaps[n], wedges), GltfAccessorType::Vec4,
                                     attributes.Vertices()));
  for (std::size_t n = 0; n < mesh.uvMaps.size(); ++n)
    attributes.AddNumbered(
        "TEXCOORD_", n,
        AddFloats(document, GatherUvs(*mesh.uvMaps[n], wedges), GltfAccessorType::Vec2, attributes.Vertices()));
  if (!mesh.tangentMaps.empty()) AddTangents(document, attributes, mesh, wedges, tangentNormals);
  AddSkins(document, attributes, mesh, wedges);

  const auto material = mesh.materialByTag.find(entry.first);
  const std::uint32_t materialIndex =
      material == mesh.materialByTag.end() ? 0 : WriteMaterial(document, *material->second, mesh);
  primitives.StartObject();
  primitives.Member("indices", indices);
  primitives.Member("mode", 4);
  primitives.Member("material", materialIndex);
  primitives.Key("attributes");
  attributes.Write(primitives);
  primitives.EndObject();
}
