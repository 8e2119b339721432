// Planning, sampling and naming of animations.

#include "host/counted_object.h"
#include "tests/support/motion_scene.h"

#include <gmock/gmock.h>

#include <cmath>
#include <functional>
#include <limits>

namespace {

using namespace motion;
using ::testing::ElementsAre;

constexpr GltfPath kT = GltfPath::Translation, kR = GltfPath::Rotation, kS = GltfPath::Scale;

// The sampled paths of a node, as "TRS" with those that are.
std::string PathsOf(const Save& save, const std::string& node) {
  std::string paths;
  if (save.Find(node, kT)) paths += "T";
  if (save.Find(node, kR)) paths += "R";
  if (save.Find(node, kS)) paths += "S";
  return paths;
}

void Link(SceneData& scene, ChannelRef from, ChannelRef to) {
  headless::ChannelLink link;
  link.from = from;
  link.to = to;
  scene.channelLinks.push_back(link);
}

// --- range and rate

struct RangeCase {
  double start, end, fps;
  std::int32_t multiplier;
  std::size_t samples;
  double last;
};

TEST(TimeRange, SampleTimesAddUp) {
  const RangeCase cases[] = {
      {0, 1, 24, 0, 26, 1.0 + 1.0 / 24},  // rounding lets a sample past the end in
      {0, 2, 24, 0, 49, 2},
      {0.5, 1, 10, 0, 7, 1.1},
      {0, 1, 2, 1, 5, 1},    // doubled
      {0, 1, 2, 2, 3, 1},    // only the value 1 doubles
      {3, 4, 0, 0, 1, 3},    // an endless step
      {5, 1, 24, 0, 0, 0},   // nothing lies in the range, yet the sampler is there
      {0, 1, -24, 0, 1, 0},  // time can't run backwards
      {1, 2, 1e300, 0, 1, 1},
      {0, 1, std::numeric_limits<double>::quiet_NaN(), 0, 0, 0},
  };
  for (const RangeCase& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.start << " to " << c.end << " at " << c.fps << " x" << c.multiplier);
    SceneData scene;
    AddSceneItem(scene, c.start, c.end, c.fps);
    scene.userValues["sceneio.gltf.save.sampleAnimFpsMultiplier"] = c.multiplier;
    const Mover mover = AddMover(scene, "a");
    Key(scene, mover.position, Axis::X, Line(0, 0, 1, 1));
    Save save(std::move(scene));
    EXPECT_EQ(ExportAnimation(*save.state), 0);
    const GltfAnimationSampler* sampler = save.Find("a", kT);
    ASSERT_TRUE(sampler);
    ASSERT_EQ(sampler->keyframes.size(), c.samples);
    double time = c.start;
    const double step = 1.0 / (c.multiplier == 1 ? c.fps + c.fps : c.fps);
    for (const GltfKeyframe& key : sampler->keyframes) {
      EXPECT_EQ(key.time, time);
      time += step;
    }
    const double last = c.samples == 0 ? 0 : sampler->keyframes.back().time;
    EXPECT_NEAR(last, c.last, 1e-12);
  }
}

TEST(TimeRange, MissingChannelsAreZero) {
  SceneData scene;
  const ItemIndex item = AddSceneItem(scene, 1, 2, 24);
  for (const char* name : {"currentS", "currentE", "fps"})
    Channel(scene, NamedChannel(scene, item, name)).name = std::string(name) + "_";
  const Mover mover = AddMover(scene, "a");
  Key(scene, mover.scale, Axis::Y, Line(0, 1, 1, 2));
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  const GltfAnimationSampler* sampler = save.Find("a", kS);
  ASSERT_TRUE(sampler);
  ASSERT_EQ(sampler->keyframes.size(), 1u);
  EXPECT_EQ(sampler->keyframes[0].time, 0);
  EXPECT_EQ(save.CountLog("   start:0.000000 end:0.000000 (0.000000 - 0.000000)"), 1u);
}

// --- planning

// A parent "p" with a child "a", which a case animates; "driver" is there to be linked from.
struct PlanScene {
  SceneData scene;
  ItemIndex sceneItem = AddSceneItem(scene, 0, 1, 2);
  Mover driver = AddMover(scene, "driver");
  Mover p = AddMover(scene, "p");
  Mover a = AddMover(scene, "a", p.item);

  void KeyOf(ItemIndex transform) { Key(scene, transform, Axis::Y, Line(0, 0, 1, 1)); }
  void LinkTo(ChannelRef to) { Link(scene, Component(scene, driver.position, Axis::X), to); }
  void LinkMatrix(const char* name) {
    Link(scene, NamedChannel(scene, driver.item, name), NamedChannel(scene, a.item, name));
  }
  void DriveOwnChannel() {
    headless::SetChannel(At(scene, a.item), "custom", 0.0);
    LinkTo(NamedChannel(scene, a.item, "custom"));
  }
  // "p" becomes the root of an IK chain.
  void Solve() { headless::AddItem(scene, "ikFullBody", "solver", p.item); }
  // Exports "a" alone, which then stands at the top.
  void Select() {
    scene.userValues["sceneio.gltf.save.exportType"] = 2;
    scene.selection = {a.item};
  }
};

struct PlanCase {
  const char* name;
  std::function<void(PlanScene&)> set;
  const char* paths;      // of the node "a"
  std::size_t records;    // of the item "a"
  std::size_t announced;  // log lines "Adding sample xform anim for a"
  bool useMatrix;
};

TEST(SamplingPlan, ChoosesPaths) {
  const PlanCase cases[] = {
      {"still", [](PlanScene&) {}, "", 0, 0, true},
      {"position", [](PlanScene& s) { s.KeyOf(s.a.position); }, "T", 1, 1, false},
      {"rotation", [](PlanScene& s) { s.KeyOf(s.a.rotation); }, "R", 1, 1, false},
      {"scale", [](PlanScene& s) { s.KeyOf(s.a.scale); }, "S", 1, 1, false},
      {"two", [](PlanScene& s) { s.KeyOf(s.a.position), s.KeyOf(s.a.scale); }, "TS", 1, 1, false},
      {"top and still", [](PlanScene& s) { s.Select(); }, "", 0, 0, true},
      {"top and scaled", [](PlanScene& s) { s.Select(), s.KeyOf(s.a.scale); }, "TRS", 1, 1, false},
      {"top and turned", [](PlanScene& s) { s.Select(), s.KeyOf(s.a.rotation); }, "TR", 1, 1, false},
      {"linked position", [](PlanScene& s) { s.LinkTo(Component(s.scene, s.a.position, Axis::Z)); }, "T", 1, 0,
       true},
      {"linked twice",
       [](PlanScene& s) {
         s.LinkTo(Component(s.scene, s.a.scale, Axis::X));
         s.LinkTo(Component(s.scene, s.a.rotation, Axis::X));
       },
       "RS", 1, 0, true},
      {"linked and keyed",
       [](PlanScene& s) {
         s.LinkTo(Component(s.scene, s.a.position, Axis::X));
         s.KeyOf(s.a.rotation);
       },
       "TR", 1, 1, false},
      {"keys hide links",
       [](PlanScene& s) {
         s.LinkTo(Component(s.scene, s.a.position, Axis::X));
         s.KeyOf(s.a.position);
       },
       "T", 1, 1, false},
      {"top and linked",
       [](PlanScene& s) {
         s.Select();
         s.LinkTo(Component(s.scene, s.a.scale, Axis::X));
       },
       "S", 1, 0, true},
      {"world", [](PlanScene& s) { s.LinkMatrix("worldMatrix"); }, "TRS", 1, 1, false},
      {"local", [](PlanScene& s) { s.LinkMatrix("localMatrix"); }, "TRS", 1, 1, false},
      {"parent", [](PlanScene& s) { s.LinkMatrix("parentMatrix"); }, "TRS", 1, 1, false},
      {"world position", [](PlanScene& s) { s.LinkMatrix("wposMatrix"); }, "T", 1, 1, false},
      {"world rotation and scale", [](PlanScene& s) { s.LinkMatrix("wrotMatrix"), s.LinkMatrix("wsclMatrix"); },
       "RS", 1, 1, false},
      {"world position, keys unseen", [](PlanScene& s) { s.LinkMatrix("wposMatrix"), s.KeyOf(s.a.rotation); }, "T",
       1, 1, false},
      {"own channel", [](PlanScene& s) { s.DriveOwnChannel(); }, "", 1, 1, false},
      {"own channel, keys unseen", [](PlanScene& s) { s.DriveOwnChannel(), s.KeyOf(s.a.position); }, "", 1, 1,
       false},
      {"ik", [](PlanScene& s) { s.Solve(); }, "TR", 1, 1, false},
      {"ik, world scale", [](PlanScene& s) { s.Solve(), s.LinkMatrix("wsclMatrix"); }, "TRS", 1, 1, false},
  };
  for (const PlanCase& c : cases) {
    SCOPED_TRACE(c.name);
    PlanScene plan;
    c.set(plan);
    Save save(std::move(plan.scene));
    ExportAnimation(*save.state);
    EXPECT_EQ(PathsOf(save, "a"), c.paths);
    GltfNode* node = save.state->gltfScene->FindNode("a");
    ASSERT_TRUE(node);
    EXPECT_EQ(node->useMatrix, c.useMatrix);
    EXPECT_EQ(save.CountLog("Adding sample xform anim for a"), c.announced);
    std::size_t records = 0;
    for (const auto& [item, planned] : save.state->animation.sampleRecords)
      if (planned[0].node == node) records += planned.size();
    EXPECT_EQ(records, c.records);
    EXPECT_EQ(save.Animations().empty(), save.state->animation.sampleRecords.empty());
  }
}

// --- sampling

double Angle(double t) { return 0.3 + 1.7 * t; }

// A parent that moves, turns about Z and grows, and two children: one turning about X, one sliding.
SceneData TurningScene() {
  SceneData scene;
  AddSceneItem(scene, -1, 1, 16);
  const Mover p = AddMover(scene, "p");
  Key(scene, p.position, Axis::X, Line(0, 1, 1, 4));
  Key(scene, p.rotation, Axis::Z, Line(0, Angle(0), 1, Angle(1)));
  Place(scene, p.scale, 2, 2, 2);
  Key(scene, p.scale, Axis::Y, Line(0, 2, 1, 2.5));
  const Mover turning = AddMover(scene, "turning", p.item);
  Place(scene, turning.position, 5, 6, 7);
  Place(scene, turning.scale, -1, 3, 1);
  Key(scene, turning.rotation, Axis::X, Line(0, Angle(0), 1, Angle(1)));
  const Mover sliding = AddMover(scene, "sliding", p.item);
  Key(scene, sliding.position, Axis::Z, Line(0, 0, 1, -8));
  return scene;
}

void ExpectNear(const std::array<double, 4>& value, std::initializer_list<double> wanted) {
  std::size_t place = 0;
  for (const double number : wanted) EXPECT_NEAR(value[place++], number, 1e-9) << "place " << place;
}

TEST(Sampling, FollowsMotion) {
  Save save(TurningScene());
  ExportAnimation(*save.state);
  ASSERT_EQ(save.Animations().size(), 1u);
  EXPECT_EQ(PathsOf(save, "p"), "TRS");
  EXPECT_EQ(PathsOf(save, "turning"), "R");
  EXPECT_EQ(PathsOf(save, "sliding"), "T");
  const auto& positions = save.Find("p", kT)->keyframes;
  ASSERT_GE(positions.size(), 33u);
  for (std::size_t key = 0; key < positions.size(); ++key) {
    const double t = positions[key].time;
    SCOPED_TRACE(t);
    ExpectNear(positions[key].value, {1 + 3 * t, 0, 0});
    ExpectNear(save.Find("p", kS)->keyframes[key].value, {2, 2 + 0.5 * t, 2});
    // Inside a moving parent the child's own motion comes out.
    ExpectNear(save.Find("sliding", kT)->keyframes[key].value, {0, 0, -8 * t});
  }
}

TEST(Sampling, UnscaledRotationIsHalfAngleQuaternion) {
  SceneData scene;
  AddSceneItem(scene, -2, 2, 8);
  const Mover mover = AddMover(scene, "a");
  Key(scene, mover.rotation, Axis::Y, Line(0, Angle(0), 1, Angle(1)));
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  for (const GltfKeyframe& key : save.Find("a", kR)->keyframes) {
    const double half = Angle(key.time) / 2;
    const double sign = std::cos(half) < 0 ? -1 : 1;  // w is never negative
    ExpectNear(key.value, {0, sign * std::sin(half), 0, sign * std::cos(half)});
  }
}

TEST(Sampling, ScaleStaysInTheQuaternion) {
  SceneData scene;
  AddSceneItem(scene, 0, 0, 1);
  const Mover mover = AddMover(scene, "a");
  Place(scene, mover.scale, 4, 4, 4);
  Key(scene, mover.rotation, Axis::X, Line(0, 0, 1, 1));
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  ExpectNear(save.Find("a", kR)->keyframes[0].value, {0, 0, 0, std::sqrt(13.0) / 2});
}

TEST(Sampling, MirroringIsLost) {
  SceneData scene;
  AddSceneItem(scene, 0, 1, 1);
  const Mover mover = AddMover(scene, "a");
  Place(scene, mover.scale, -2, 1, 1);
  Key(scene, mover.scale, Axis::Y, Line(0, 3, 1, 5));
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  ExpectNear(save.Find("a", kS)->keyframes[1].value, {2, 5, 1});
}

TEST(Sampling, TopLevelIsSampledInTheWorld) {
  SceneData scene;
  AddSceneItem(scene, 0, 1, 1);
  const Mover p = AddMover(scene, "p");
  Place(scene, p.position, 10, 0, 0);
  const Mover a = AddMover(scene, "a", p.item);
  Key(scene, a.position, Axis::Y, Line(0, 0, 1, 3));
  scene.userValues["sceneio.gltf.save.exportType"] = 1;
  scene.selection = {a.item};
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  ExpectNear(save.Find("a", kT)->keyframes[1].value, {10, 3, 0});
}

TEST(Sampling, ParentThatCannotBeReadLeavesTheWorld) {
  SceneData scene;
  AddSceneItem(scene, 0, 1, 1);
  const Mover p = AddMover(scene, "p");
  Place(scene, p.position, 10, 0, 0);
  At(scene, p.item).hasLocator = false;
  const Mover a = AddMover(scene, "a", p.item);
  Key(scene, a.position, Axis::Y, Line(0, 0, 1, 3));
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  CZyUser_Locator locator;
  for (const auto& [item, node] : save.state->nodesByItem)
    if (node->name == "a") locator.Set(item);
  for (const GltfKeyframe& key : save.Find("a", kT)->keyframes) {
    CZyUser_ChannelRead read;
    save.state->scene.Channels(nullptr, key.time, read);
    Matrix4 world;
    ASSERT_EQ(locator.WorldTransform(read, world), ZYe_OK);
    ExpectNear(key.value, {world(3, 0), world(3, 1), world(3, 2)});
  }
}

TEST(Sampling, BakesLinks) {
  SceneData scene;
  AddSceneItem(scene, 0, 1, 4);
  const Mover driver = AddMover(scene, "driver");
  Key(scene, driver.position, Axis::X, Line(0, 0, 1, 2));
  const Mover a = AddMover(scene, "a");
  Link(scene, Component(scene, driver.position, Axis::X), Component(scene, a.position, Axis::Y));
  scene.channelLinks[0].factor = -3;
  scene.channelLinks[0].offset = 1;
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  const GltfAnimationSampler* sampler = save.Find("a", kT);
  ASSERT_TRUE(sampler);
  for (const GltfKeyframe& key : sampler->keyframes) ExpectNear(key.value, {0, 1 - 6 * key.time, 0});
}

// A scene whose reads at a time fail for chosen calls.
class UnreadableScene final : public CountedObject<IZyScene> {
 public:
  UnreadableScene(IZyScene* scene, std::vector<bool> fails) : scene_(scene), fails_(std::move(fails)) {}

  zyresult Channels(const char* actionName, double time, IZyObject*& read) override {
    const bool fail = !actionName && call_ < fails_.size() && fails_[call_];
    if (!actionName) ++call_;
    return fail ? ZYe_FAILED : scene_->Channels(actionName, time, read);
  }
  zyresult SetupChannels(IZyObject*& read) override { return scene_->SetupChannels(read); }
  zyresult ItemCount(std::uint32_t type, std::uint32_t& count) override { return scene_->ItemCount(type, count); }
  zyresult ItemByIndex(std::uint32_t type, std::uint32_t index, IZyObject*& item) override {
    return scene_->ItemByIndex(type, index, item);
  }
  zyresult AnyItemOfType(std::uint32_t type, IZyObject*& item) override {
    return scene_->AnyItemOfType(type, item);
  }
  zyresult GraphLookup(const char* name, IZyObject*& graph) override { return scene_->GraphLookup(name, graph); }
  zyresult RenderCameraCount(std::uint32_t& count) override { return scene_->RenderCameraCount(count); }
  zyresult RenderCameraByIndex(std::uint32_t index, IZyObject*& item) override {
    return scene_->RenderCameraByIndex(index, item);
  }

 private:
  IZyScene* scene_;
  std::vector<bool> fails_;
  std::size_t call_ = 0;
};

TEST(Sampling, FailedTimesReuseTheReadBefore) {
  SceneData scene;
  AddSceneItem(scene, 1, 4, 1);
  const Mover a = AddMover(scene, "a");
  Key(scene, a.position, Axis::X, Line(0, 0, 1, 1));
  Key(scene, a.rotation, Axis::X, Line(0, 0, 1, 1));
  Save save(std::move(scene));
  UnreadableScene unreadable(save.Host().Scene(), {true, false, true, false});
  save.state->scene.Set(&unreadable);
  ExportAnimation(*save.state);
  std::vector<double> times, x;
  for (const GltfKeyframe& key : save.Find("a", kT)->keyframes) {
    times.push_back(key.time);
    x.push_back(key.value[0]);
  }
  EXPECT_THAT(times, ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(x, ElementsAre(0, 2, 2, 4));  // the first has no read at all: the identity
  EXPECT_THAT(save.Find("a", kR)->keyframes[0].value, ElementsAre(0, 0, 0, 1));
  save.state->scene.Clear();
}

}  // namespace
