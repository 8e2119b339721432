#include "importer/mesh_build.h"

#include "headless/mesh_check.h"
#include "host/fourcc.h"
#include "importer/folded_values.h"
#include "importer/import_model.h"
#include "importer/source_check.h"
#include "importer/transform_math.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace importer {
namespace {

using headless::kNone;
using headless::MeshData;

template <std::size_t N>
using Value = std::array<float, N>;

// What is left out of one mesh.
struct Losses {
  std::size_t points = 0;     // faces of one vertex
  std::size_t lines = 0;      // faces of two
  std::size_t badValues = 0;  // values that aren't finite
  std::size_t morphShapes = 0;
};

// A direction under the linear part of a matrix, a row vector.
Vector3 Turned(const aiVector3D& v, const Matrix4& matrix) {
  const double x = static_cast<double>(v.x), y = static_cast<double>(v.y), z = static_cast<double>(v.z);
  Vector3 result;
  for (std::size_t i = 0; i < 3; ++i) result[i] = x * matrix(0, i) + y * matrix(1, i) + z * matrix(2, i);
  return result;
}

Vector3 Unit(const Vector3& v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  return length > 0 ? Vector3{v[0] / length, v[1] / length, v[2] / length} : Vector3{0, 0, 0};
}

Matrix4 Transposed(const Matrix4& matrix) {
  Matrix4 result;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column) result(row, column) = matrix(column, row);
  return result;
}

class MeshBuilder {
 public:
  MeshBuilder(const MeshParts& parts, const MapNames& names) : parts_(parts), names_(names) {
    if (IsIdentity(parts.carry)) return;
    Matrix4 linear = parts.carry;
    for (std::size_t i = 0; i < 3; ++i) linear(3, i) = 0;
    mirrored_ = Determinant(linear) < 0;
    normalMatrix_ = Transposed(Inverse(linear));
    linear_ = linear;
  }

  std::shared_ptr<MeshData> Build() {
    AddPolygons();
    if (corners_.empty()) return nullptr;
    auto mesh = std::make_shared<MeshData>();
    AddPoints(*mesh);
    mesh->polygonStarts = std::move(polygonStarts_);
    mesh->material.texts = std::move(tags_);
    mesh->material.perPolygon = std::move(polygonTags_);
    AddNormals(*mesh);
    AddColors(*mesh);
    AddUvs(*mesh);
    AddTangents(*mesh);
    AddWeights(*mesh);
    return mesh;
  }

  const Losses& Lost() const { return losses_; }

 private:
  struct Corner {
    std::uint32_t part = 0;
    std::uint32_t vertex = 0;
  };

  const aiMesh& Part(std::uint32_t part) const { return *parts_.meshes[part]; }

  void AddPolygons();
  void AddFace(std::uint32_t part, const aiFace& face);
  void AddPoints(MeshData& mesh);
  void AddNormals(MeshData& mesh);
  void AddColors(MeshData& mesh);
  void AddUvs(MeshData& mesh);
  void AddTangents(MeshData& mesh);
  void AddWeights(MeshData& mesh) const;

  // Adds a map of the values that `read` gives for part and vertex; absent where it gives none, or one that isn't
  // finite.
  template <std::size_t N, class Read>
  void AddMap(MeshData& mesh, std::uint32_t type, const std::string& name, Read read);

  const MeshParts& parts_;
  const MapNames& names_;
  Matrix4 linear_, normalMatrix_;
  bool mirrored_ = false;
  std::vector<Corner> corners_;
  std::vector<std::uint32_t> polygonStarts_ = {0};
  std::vector<std::string> tags_;
  std::vector<std::uint32_t> polygonTags_;
  std::vector<std::vector<Influence>> pointInfluences_;  // by place in the table of their kinds
  std::vector<std::uint32_t> influencesOfPoint_;
  Losses losses_;
};

void MeshBuilder::AddPolygons() {
  std::map<std::uint32_t, std::uint32_t> tagOfMaterial;
  for (std::uint32_t part = 0; part < parts_.meshes.size(); ++part) {
    const aiMesh& mesh = Part(part);
    losses_.morphShapes += mesh.mNumAnimMeshes;
    const auto [tag, isNew] =
        tagOfMaterial.try_emplace(mesh.mMaterialIndex, static_cast<std::uint32_t>(tags_.size()));
    if (isNew) tags_.push_back(names_.materials[mesh.mMaterialIndex]);
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
      const aiFace& face = mesh.mFaces[f];
      losses_.points += face.mNumIndices == 1;
      losses_.lines += face.mNumIndices == 2;
      if (face.mNumIndices < 3) continue;
      AddFace(part, face);
      polygonTags_.push_back(tag->second);
    }
  }
}

void MeshBuilder::AddFace(std::uint32_t part, const aiFace& face) {
  if (corners_.size() + face.mNumIndices >= kNone) throw ImportError("a mesh has too many polygon corners");
  for (unsigned i = 0; i < face.mNumIndices; ++i)
    corners_.push_back({part, face.mIndices[mirrored_ ? face.mNumIndices - 1 - i : i]});
  polygonStarts_.push_back(static_cast<std::uint32_t>(corners_.size()));
}

void MeshBuilder::AddPoints(MeshData& mesh) {
  std::map<std::vector<Influence>, std::uint32_t> kinds;
  FoldedValues points(4);
  std::vector<std::vector<std::uint32_t>> pointOfVertex;
  for (const aiMesh* part : parts_.meshes) pointOfVertex.emplace_back(part->mNumVertices, kNone);
  std::vector<std::uint32_t> cornerPoints;
  cornerPoints.reserve(corners_.size());
  for (const Corner& corner : corners_) {
    std::uint32_t& point = pointOfVertex[corner.part][corner.vertex];
    if (point == kNone) {
      const aiVector3D& v = Part(corner.part).mVertices[corner.vertex];
      Value<4> key = {v.x, v.y, v.z, 0};
      if (!parts_.influences.empty()) {
        const auto& influences = parts_.influences[corner.part][corner.vertex];
        const auto [kind, isNew] = kinds.try_emplace(influences, static_cast<std::uint32_t>(kinds.size()));
        if (isNew) pointInfluences_.push_back(influences);
        key[3] = std::bit_cast<float>(kind->second);
      }
      point = points.Place(key);
    }
    cornerPoints.push_back(point);
  }
  std::vector<float> positions;
  positions.reserve(std::size_t{points.Count()} * 3);
  for (std::uint32_t point = 0; point < points.Count(); ++point) {
    const std::span<const float> key = points.At(point);
    const Vector3 moved = Turned({key[0], key[1], key[2]}, linear_);
    for (std::size_t i = 0; i < 3; ++i) positions.push_back(static_cast<float>(moved[i] + parts_.carry(3, i)));
    if (!parts_.influences.empty()) influencesOfPoint_.push_back(std::bit_cast<std::uint32_t>(key[3]));
  }
  mesh.points = std::move(positions);
  mesh.polygonPoints = std::move(cornerPoints);
}

template <std::size_t N, class Read>
void MeshBuilder::AddMap(MeshData& mesh, std::uint32_t type, const std::string& name, Read read) {
  constexpr std::uint32_t kUnread = kNone - 1;
  FoldedValues values(N);
  std::vector<std::vector<std::uint32_t>> placeOfVertex;
  for (const aiMesh* part : parts_.meshes) placeOfVertex.emplace_back(part->mNumVertices, kUnread);
  std::vector<std::uint32_t> cornerValues;
  cornerValues.reserve(corners_.size());
  for (const Corner& corner : corners_) {
    std::uint32_t& place = placeOfVertex[corner.part][corner.vertex];
    if (place == kUnread) {
      place = kNone;
      if (const std::optional<Value<N>> value = read(Part(corner.part), corner.vertex)) {
        if (std::all_of(value->begin(), value->end(), [](float part) { return std::isfinite(part); }))
          place = values.Place(*value);
        else
          ++losses_.badValues;
      }
    }
    cornerValues.push_back(place);
  }
  if (values.Count() > 0) mesh.maps.push_back({type, name, N, values.Take(), {}, std::move(cornerValues)});
}

void MeshBuilder::AddNormals(MeshData& mesh) {
  AddMap<3>(mesh, kMapNormal, "Normal", [&](const aiMesh& part, std::uint32_t vertex) -> std::optional<Value<3>> {
    if (!part.mNormals) return std::nullopt;
    const aiVector3D& normal = part.mNormals[vertex];
    // The host works out the normals that a file leaves at nothing.
    if (normal.x == 0 && normal.y == 0 && normal.z == 0) return std::nullopt;
    if (IsIdentity(parts_.carry)) return Value<3>{normal.x, normal.y, normal.z};
    const Vector3 n = Unit(Turned(normal, normalMatrix_));
    return Value<3>{static_cast<float>(n[0]), static_cast<float>(n[1]), static_cast<float>(n[2])};
  });
}

void MeshBuilder::AddColors(MeshData& mesh) {
  for (std::size_t channel = 0; channel < names_.colors.size(); ++channel) {
    AddMap<4>(mesh, kMapRgba, names_.colors[channel],
              [channel](const aiMesh& part, std::uint32_t vertex) -> std::optional<Value<4>> {
                if (!part.mColors[channel]) return std::nullopt;
                const aiColor4D& c = part.mColors[channel][vertex];
                return Value<4>{c.r, c.g, c.b, c.a};
              });
  }
}

void MeshBuilder::AddUvs(MeshData& mesh) {
  for (std::size_t channel = 0; channel < names_.uvs.size(); ++channel) {
    AddMap<2>(mesh, kMapUv, names_.uvs[channel],
              [channel](const aiMesh& part, std::uint32_t vertex) -> std::optional<Value<2>> {
                if (!part.mTextureCoords[channel]) return std::nullopt;
                const aiVector3D& uv = part.mTextureCoords[channel][vertex];
                return Value<2>{uv.x, uv.y};
              });
  }
}

void MeshBuilder::AddTangents(MeshData& mesh) {
  AddMap<6>(mesh, kMapTangentBasis, "Tangent",
            [&](const aiMesh& part, std::uint32_t vertex) -> std::optional<Value<6>> {
              if (!part.mTangents || !part.mBitangents) return std::nullopt;
              const Vector3 t = Turned(part.mTangents[vertex], linear_);
              const Vector3 b = Turned(part.mBitangents[vertex], linear_);
              return Value<6>{static_cast<float>(t[0]), static_cast<float>(t[1]), static_cast<float>(t[2]),
                              static_cast<float>(b[0]), static_cast<float>(b[1]), static_cast<float>(b[2])};
            });
}

void MeshBuilder::AddWeights(MeshData& mesh) const {
  std::vector<std::vector<float>> weights(parts_.weightMaps.size());
  std::vector<std::vector<std::uint32_t>> places(parts_.weightMaps.size());
  for (auto& pointValues : places) pointValues.assign(influencesOfPoint_.size(), kNone);
  for (std::size_t point = 0; point < influencesOfPoint_.size(); ++point) {
    for (const Influence& influence : pointInfluences_[influencesOfPoint_[point]]) {
      places[influence.deformer][point] = static_cast<std::uint32_t>(weights[influence.deformer].size());
      weights[influence.deformer].push_back(influence.weight);
    }
  }
  for (std::size_t map = 0; map < weights.size(); ++map)
    mesh.maps.push_back(
        {kMapWeight, parts_.weightMaps[map], 1, std::move(weights[map]), std::move(places[map]), {}});
}

std::string UniqueName(std::string name, std::set<std::string>& taken) {
  const std::string base = name;
  for (int number = 2; !taken.insert(name).second; ++number) name = fmt::format("{} {}", base, number);
  return name;
}

// The name that all meshes that name a UV channel give it, empty when they differ.
std::string SharedUvName(const aiScene& source, unsigned channel) {
  std::string name;
  for (unsigned i = 0; i < source.mNumMeshes; ++i) {
    const aiMesh& mesh = *source.mMeshes[i];
    if (!mesh.mTextureCoords[channel] || !mesh.mTextureCoordsNames || !mesh.mTextureCoordsNames[channel]) continue;
    const std::string own = TextOf(*mesh.mTextureCoordsNames[channel]);
    if (own.empty() || own == name) continue;
    if (!name.empty()) return std::string();
    name = own;
  }
  return name;
}

void AddLosses(const Losses& losses, const std::string& name, std::vector<std::string>& warnings) {
  const auto add = [&](std::size_t count, const char* what) {
    if (count > 0) warnings.push_back(fmt::format("mesh \"{}\": {} {} not carried over", name, count, what));
  };
  add(losses.points, "single points");
  add(losses.lines, "lines");
  add(losses.morphShapes, "morph shapes");
  add(losses.badValues, "values of vertices that aren't finite");
}

}  // namespace

MapNames CollectMapNames(const aiScene& source, std::vector<std::string> materialTags) {
  unsigned uvs = 0, colors = 0;
  for (unsigned i = 0; i < source.mNumMeshes; ++i) {
    const aiMesh& mesh = *source.mMeshes[i];
    for (unsigned channel = 0; channel < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++channel)
      if (mesh.mTextureCoords[channel]) uvs = std::max(uvs, channel + 1);
    for (unsigned channel = 0; channel < AI_MAX_NUMBER_OF_COLOR_SETS; ++channel)
      if (mesh.mColors[channel]) colors = std::max(colors, channel + 1);
  }
  MapNames names;
  names.materials = std::move(materialTags);
  std::set<std::string> taken;
  for (unsigned channel = 0; channel < uvs; ++channel) {
    std::string name = SharedUvName(source, channel);
    if (name.empty()) name = channel == 0 ? "Texture" : fmt::format("Texture {}", channel + 1);
    names.uvs.push_back(UniqueName(std::move(name), taken));
  }
  for (unsigned channel = 0; channel < colors; ++channel)
    names.colors.push_back(channel == 0 ? "Color" : fmt::format("Color {}", channel + 1));
  return names;
}

std::shared_ptr<const MeshData> BuildMesh(const MeshParts& parts, const MapNames& names, const std::string& name,
                                          std::vector<std::string>& warnings) {
  MeshBuilder builder(parts, names);
  const std::shared_ptr<MeshData> mesh = builder.Build();
  AddLosses(builder.Lost(), name, warnings);
  if (!mesh) return nullptr;
  if (const auto fault = headless::FindMeshFault(*mesh))
    throw ImportError(fmt::format("mesh \"{}\": {}", name, *fault));
  return mesh;
}

}  // namespace importer
