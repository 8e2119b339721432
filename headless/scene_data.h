// A whole scene as plain records: what readers fill and the headless host serves. Items refer to each other
// by their index in SceneData::items, which is scene order; -1 where there is none.
#pragma once

#include "headless/boxed.h"
#include "headless/mesh_data.h"
#include "headless/shared_text.h"
#include "host/matrix4.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace headless {

using ItemIndex = std::int32_t;

enum class Interpolation { Step, Linear, Cubic };
enum class Extrapolation { Constant, Linear, Repeat, Oscillate };

struct KeyData {
  double time = 0;  // seconds
  double value = 0;
  // How the curve goes from this key to the next. A cubic segment is a Hermite curve; slopes are per second.
  Interpolation interpolation = Interpolation::Linear;
  double slopeIn = 0;
  double slopeOut = 0;
};

struct EnvelopeData {
  std::vector<KeyData> keys;  // times ascend strictly; not empty
  Extrapolation before = Extrapolation::Constant;
  Extrapolation after = Extrapolation::Constant;
};

using ChannelValue = std::variant<std::int32_t, double, SharedText>;

// What few channels have.
struct ChannelExtras {
  std::optional<ChannelValue> edit;           // absent: as setup
  std::optional<EnvelopeData> setupEnvelope;  // keys of the setup layer
  std::optional<EnvelopeData> envelope;       // keys of the edit layer
  bool readable = true;                       // false: every read of the channel fails
  std::optional<std::uint32_t> linkCount;     // recorded number of driving links; absent: counted
};

struct ChannelData {
  SharedText name;
  ChannelValue setup;  // its alternative is the channel's type
  Rare<ChannelExtras> extras;
};

// World matrices as a host computed them, replayed exactly.
struct RecordedWorld {
  struct Key {
    double time = 0;  // seconds
    Matrix4 matrix;
  };
  std::optional<Matrix4> bind;  // the setup state; absent: the first key
  std::vector<Key> keys;        // ascending times; empty: `bind` at every time
  bool linear = false;          // between keys: element by element, else the earlier key's matrix
};

// Influences of one mesh of a deform group: those of point i are starts[i] up to starts[i + 1].
struct RecordedInfluences {
  Array<std::uint32_t> starts;
  Array<std::uint32_t> deformers;  // place in DeformGroupData::deformers
  Array<float> weights;
};

struct DeformGroupData {
  std::vector<ItemIndex> meshes;
  std::vector<ItemIndex> deformers;
  // Per mesh, absent where the weights come from the weight maps that the deformers name.
  std::vector<std::optional<RecordedInfluences>> influences;
  bool hasDeformer = true;  // false: the host gives no group deformer
};

struct ChannelRef {
  ItemIndex item = -1;
  std::int32_t channel = -1;
};

struct GroupData {
  std::vector<ItemIndex> items;
  std::vector<ChannelRef> channels;
};

struct ClipData {
  bool enabled = true;
  bool active = false;
  std::string exportTag;  // what the command item.exportTags answers
  // What channels hold while the clip is active.
  std::vector<std::pair<ChannelRef, std::variant<ChannelValue, EnvelopeData>>> channels;
};

// What few items have.
struct ItemExtras {
  // Children in an order of their own; those that aren't here follow in scene order, as all do when it's empty.
  std::vector<ItemIndex> childOrder;
  std::vector<std::string> packages;
  std::map<std::uint32_t, std::string> tags;  // by four-character code
  std::string weightMap;                      // of a deformer: the weight map that a deform group reads
};

struct ItemData {
  std::string id;  // unique in the scene
  SharedText type;
  std::string name;
  ItemIndex parent = -1;
  std::vector<ChannelData> channels;  // all of them, in index order
  Rare<ItemExtras> extras;

  bool hasLocator = true;  // false: a locator type without the locator interface
  // Main transform items by TransformKind: scale, rotation, position. The stack itself is the reverse links
  // of the locator in graph "xfrmCore".
  std::array<ItemIndex, 3> mainTransforms = {-1, -1, -1};
  Boxed<RecordedWorld> world;

  std::shared_ptr<const MeshData> mesh;  // value of a mesh's "mesh" channel
  ItemIndex instanceSource = -1;         // of a meshInst

  // Of a `transform` item: the inverse of another transform item's matrix, or its own matrix.
  ItemIndex inverseOf = -1;
  Boxed<Matrix4> matrix;

  Boxed<std::string> imagePath;   // of an imageMap, in the form of the scene file
  ItemIndex textureLocator = -1;  // of an imageMap

  ItemIndex deformationItem = -1;  // of a deformer: the item whose motion drives it
  Boxed<DeformGroupData> deformGroup;
  Boxed<GroupData> group;
  Boxed<ClipData> clip;
};

// Drives a channel from another: value * factor + offset. Between matrix channels ("worldMatrix",
// "wposMatrix", "wrotMatrix", "wsclMatrix", "localMatrix", "parentMatrix") the target's matrix takes over the
// source's whole matrix or the part that the target channel names.
struct ChannelLink {
  ChannelRef from;
  ChannelRef to;
  double factor = 1;
  double offset = 0;
};

struct ApplicationData {
  std::string name = "Orvo";
  std::array<std::int32_t, 3> version = {1, 0, 0};  // "1.0v0"
  std::int32_t build = 0;
  std::string osName = "Linux";
  std::string osVersion = "64 bit";

  bool operator==(const ApplicationData& other) const = default;
};

enum class CommandState { Works, Absent, Fails };

struct SceneData {
  std::vector<ItemData> items;  // in scene order
  // Types beyond the host's own, with their base types.
  std::vector<std::pair<std::string, std::string>> types;
  // Named item graphs as links (from, to) in order; a graph that isn't here doesn't exist. "chanLinks" gives
  // `channelLinks` too.
  std::map<std::string, std::vector<std::pair<ItemIndex, ItemIndex>>> graphs;
  std::vector<ChannelLink> channelLinks;
  std::vector<ItemIndex> selection;
  std::vector<ItemIndex> renderCameras;
  std::map<std::string, std::int32_t> userValues;
  ApplicationData application;
  CommandState exportTagsCommand = CommandState::Works;
  std::string directory;  // of the scene file; image paths that aren't absolute start here
};

// A scene that holds the scene item alone, with the graphs that every scene has, empty.
SceneData MakeScene();

// Appends an item of a type with the channels that the host gives to every item of that type, transform
// items "position", "rotation" and "scale" not included. Its id is made of the type and the item's index.
ItemIndex AddItem(SceneData& scene, const std::string& type, const std::string& name, ItemIndex parent = -1);

// Adds a transform item of `type` (translation, rotation, scale, transform, shear) at the end of a locator's
// stack, and makes it the main one when the locator has none of its kind. The stack is listed from the
// outermost transform to the innermost: a point passes the last one first.
ItemIndex AddTransform(SceneData& scene, ItemIndex locator, const std::string& type, const std::string& name);

// The channel's index, -1 when the item has none of the name.
std::int32_t FindChannel(const ItemData& item, std::string_view name);

// Sets a channel's setup value, adding the channel at the end when the item lacks it.
void SetChannel(ItemData& item, const std::string& name, ChannelValue value);

}  // namespace headless
