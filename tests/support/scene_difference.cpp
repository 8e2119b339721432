#include "tests/support/scene_difference.h"

#include <bit>
#include <map>
#include <stdexcept>

namespace test_support {
namespace {

using namespace headless;  // NOLINT: all of its records

// Ends the comparison; the places are put together on the way out.
struct Different {
  std::string place;
};

template <class T>
void Compare(const T& one, const T& other) {
  if (!(one == other)) throw Different{};
}

void Compare(double one, double other) {
  if (std::bit_cast<std::uint64_t>(one) != std::bit_cast<std::uint64_t>(other)) throw Different{};
}
void Compare(float one, float other) {
  if (std::bit_cast<std::uint32_t>(one) != std::bit_cast<std::uint32_t>(other)) throw Different{};
}

template <class Fields>
void At(const std::string& place, Fields compare) {
  try {
    compare();
  } catch (const Different& difference) {
    throw Different{place + (difference.place.empty() ? "" : "." + difference.place)};
  }
}

template <class T>
void Field(const char* name, const T& one, const T& other) {
  At(name, [&] { Compare(one, other); });
}

template <class List, class Item>
void Each(const char* name, const List& one, const List& other, Item compare) {
  At(name, [&] {
    if (one.size() != other.size()) throw Different{"size"};
    for (std::size_t i = 0; i < one.size(); ++i) At(std::to_string(i), [&] { compare(one[i], other[i]); });
  });
}

template <class T>
void Each(const char* name, const Array<T>& one, const Array<T>& other) {
  Each(name, one, other, [](T a, T b) { Compare(a, b); });
}

template <class Optional, class Item>
void Maybe(const char* name, const Optional& one, const Optional& other, Item compare) {
  At(name, [&] {
    if (one.has_value() != other.has_value()) throw Different{"presence"};
    if (one) compare(*one, *other);
  });
}

void CompareValue(const ChannelValue& one, const ChannelValue& other) {
  Field("type", one.index(), other.index());
  if (const double* number = std::get_if<double>(&one)) Compare(*number, std::get<double>(other));
  Compare(one, other);
}

void CompareEnvelope(const EnvelopeData& one, const EnvelopeData& other) {
  Field("before", one.before, other.before);
  Field("after", one.after, other.after);
  Each("keys", one.keys, other.keys, [](const KeyData& a, const KeyData& b) {
    Field("time", a.time, b.time);
    Field("value", a.value, b.value);
    Field("interpolation", a.interpolation, b.interpolation);
    Field("slopeIn", a.slopeIn, b.slopeIn);
    Field("slopeOut", a.slopeOut, b.slopeOut);
  });
}

void CompareMatrix(const Matrix4& one, const Matrix4& other) {
  Each("m", one.m, other.m, [](double a, double b) { Compare(a, b); });
}

void CompareRef(const ChannelRef& one, const ChannelRef& other) {
  Field("item", one.item, other.item);
  Field("channel", one.channel, other.channel);
}

void CompareChannel(const ChannelData& one, const ChannelData& other) {
  Field("name", one.name, other.name);
  At("setup", [&] { CompareValue(one.setup, other.setup); });
  Maybe("edit", one.extras->edit, other.extras->edit, CompareValue);
  Maybe("setupEnvelope", one.extras->setupEnvelope, other.extras->setupEnvelope, CompareEnvelope);
  Maybe("envelope", one.extras->envelope, other.extras->envelope, CompareEnvelope);
  Field("readable", one.extras->readable, other.extras->readable);
  Field("linkCount", one.extras->linkCount, other.extras->linkCount);
}

void CompareTag(const PolygonTagData& one, const PolygonTagData& other) {
  Field("texts", one.texts, other.texts);
  Each("perPolygon", one.perPolygon, other.perPolygon);
}

void CompareMesh(const MeshData& one, const MeshData& other) {
  Each("points", one.points, other.points);
  Each("pointIds", one.pointIds, other.pointIds);
  Each("polygonStarts", one.polygonStarts, other.polygonStarts);
  Each("polygonPoints", one.polygonPoints, other.polygonPoints);
  At("material", [&] { CompareTag(one.material, other.material); });
  At("part", [&] { CompareTag(one.part, other.part); });
  Each("maps", one.maps, other.maps, [](const MeshMapData& a, const MeshMapData& b) {
    Field("type", a.type, b.type);
    Field("name", a.name, b.name);
    Field("dimension", a.dimension, b.dimension);
    Each("values", a.values, b.values);
    Each("pointValues", a.pointValues, b.pointValues);
    Each("cornerValues", a.cornerValues, b.cornerValues);
  });
  Field("smoothingAngle", one.smoothingAngle, other.smoothingAngle);
  Each("triangleStarts", one.triangleStarts, other.triangleStarts);
  Each("trianglePoints", one.trianglePoints, other.trianglePoints);
  Each("cornerNormals", one.cornerNormals, other.cornerNormals);
}

void CompareWorld(const RecordedWorld& one, const RecordedWorld& other) {
  Maybe("bind", one.bind, other.bind, CompareMatrix);
  Field("linear", one.linear, other.linear);
  Each("keys", one.keys, other.keys, [](const RecordedWorld::Key& a, const RecordedWorld::Key& b) {
    Field("time", a.time, b.time);
    CompareMatrix(a.matrix, b.matrix);
  });
}

void CompareDeformGroup(const DeformGroupData& one, const DeformGroupData& other) {
  Field("meshes", one.meshes, other.meshes);
  Field("deformers", one.deformers, other.deformers);
  Field("hasDeformer", one.hasDeformer, other.hasDeformer);
  Each("influences", one.influences, other.influences, [](const auto& a, const auto& b) {
    Maybe("recorded", a, b, [](const RecordedInfluences& left, const RecordedInfluences& right) {
      Each("starts", left.starts, right.starts);
      Each("deformers", left.deformers, right.deformers);
      Each("weights", left.weights, right.weights);
    });
  });
}

void CompareClip(const ClipData& one, const ClipData& other) {
  Field("enabled", one.enabled, other.enabled);
  Field("active", one.active, other.active);
  Field("exportTag", one.exportTag, other.exportTag);
  Each("channels", one.channels, other.channels, [](const auto& a, const auto& b) {
    CompareRef(a.first, b.first);
    Field("kind", a.second.index(), b.second.index());
    if (const auto* value = std::get_if<ChannelValue>(&a.second))
      CompareValue(*value, std::get<ChannelValue>(b.second));
    else
      CompareEnvelope(std::get<EnvelopeData>(a.second), std::get<EnvelopeData>(b.second));
  });
}

void CompareItem(const ItemData& one, const ItemData& other) {
  Field("id", one.id, other.id);
  Field("type", one.type, other.type);
  Field("name", one.name, other.name);
  Field("parent", one.parent, other.parent);
  Field("childOrder", one.extras->childOrder, other.extras->childOrder);
  Each("channels", one.channels, other.channels, CompareChannel);
  Field("packages", one.extras->packages, other.extras->packages);
  Field("tags", one.extras->tags, other.extras->tags);
  Field("hasLocator", one.hasLocator, other.hasLocator);
  Field("mainTransforms", one.mainTransforms, other.mainTransforms);
  Maybe("world", one.world, other.world, CompareWorld);
  Maybe("matrix", one.matrix, other.matrix, CompareMatrix);
  Field("inverseOf", one.inverseOf, other.inverseOf);
  Field("mesh presence", one.mesh != nullptr, other.mesh != nullptr);
  if (one.mesh) At("mesh", [&] { CompareMesh(*one.mesh, *other.mesh); });
  Field("instanceSource", one.instanceSource, other.instanceSource);
  Field("imagePath", one.imagePath, other.imagePath);
  Field("textureLocator", one.textureLocator, other.textureLocator);
  Field("deformationItem", one.deformationItem, other.deformationItem);
  Field("weightMap", one.extras->weightMap, other.extras->weightMap);
  Maybe("deformGroup", one.deformGroup, other.deformGroup, CompareDeformGroup);
  Maybe("group", one.group, other.group, [](const GroupData& a, const GroupData& b) {
    Field("items", a.items, b.items);
    Each("channels", a.channels, b.channels, CompareRef);
  });
  Maybe("clip", one.clip, other.clip, CompareClip);
}

// By item: the first one with the same mesh.
std::vector<std::size_t> MeshUsers(const SceneData& scene) {
  std::map<const MeshData*, std::size_t> first;
  std::vector<std::size_t> users;
  for (const ItemData& item : scene.items)
    users.push_back(first.emplace(item.mesh.get(), users.size()).first->second);
  return users;
}

}  // namespace

std::string FindDifference(const SceneData& one, const SceneData& other) {
  try {
    Each("items", one.items, other.items, CompareItem);
    Field("shared meshes", MeshUsers(one), MeshUsers(other));
    Field("types", one.types, other.types);
    Field("graphs", one.graphs, other.graphs);
    Each("channelLinks", one.channelLinks, other.channelLinks, [](const ChannelLink& a, const ChannelLink& b) {
      CompareRef(a.from, b.from);
      CompareRef(a.to, b.to);
      Field("factor", a.factor, b.factor);
      Field("offset", a.offset, b.offset);
    });
    Field("selection", one.selection, other.selection);
    Field("renderCameras", one.renderCameras, other.renderCameras);
    Field("userValues", one.userValues, other.userValues);
    Field("application.name", one.application.name, other.application.name);
    Field("application.version", one.application.version, other.application.version);
    Field("application.build", one.application.build, other.application.build);
    Field("application.osName", one.application.osName, other.application.osName);
    Field("application.osVersion", one.application.osVersion, other.application.osVersion);
    Field("exportTagsCommand", one.exportTagsCommand, other.exportTagsCommand);
    return {};
  } catch (const Different& difference) {
    return difference.place;
  }
}

}  // namespace test_support
