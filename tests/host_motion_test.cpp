// How the headless host evaluates channels and world matrices.
#include "tests/support/host_rig.h"
#include "tests/support/posed_file.h"

#include <cmath>
#include <numbers>

namespace {

using namespace headless;
using test_support::At;
using test_support::ChannelOf;
using test_support::HostRig;
using test_support::Keys;
using test_support::Point;
using test_support::State;
using test_support::Transformed;

constexpr double kPi = std::numbers::pi;

// Rodrigues' formula: the point turned counter-clockwise about a coordinate axis.
Point Turned(const Point& point, std::size_t axis, double angle) {
  Point k = {0, 0, 0};
  k[axis] = 1;
  const Point cross = {k[1] * point[2] - k[2] * point[1], k[2] * point[0] - k[0] * point[2],
                       k[0] * point[1] - k[1] * point[0]};
  Point out;
  for (std::size_t i = 0; i < 3; ++i)
    out[i] = point[i] * std::cos(angle) + cross[i] * std::sin(angle) + k[i] * point[axis] * (1 - std::cos(angle));
  return out;
}

Point Sum(const Point& a, const Point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Point Scaled(const Point& a, const Point& b) { return {a[0] * b[0], a[1] * b[1], a[2] * b[2]}; }

void ExpectNear(const Point& actual, const Point& expected) {
  for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(actual[axis], expected[axis], 1e-12) << "axis " << axis;
}

ChannelRef Ref(SceneData& scene, ItemIndex item, const std::string& name) {
  return {item, FindChannel(At(scene, item), name)};
}

ItemIndex AddVector(SceneData& scene, ItemIndex locator, const std::string& type, const Point& value) {
  const ItemIndex item = AddTransform(scene, locator, type, type);
  for (std::size_t axis = 0; axis < 3; ++axis) At(scene, item).channels[axis].setup = value[axis];
  return item;
}

// A locator that stands at a point.
ItemIndex AddPlaced(SceneData& scene, const Point& position, ItemIndex parent = -1) {
  const ItemIndex locator = AddItem(scene, "locator", "placed", parent);
  AddVector(scene, locator, "translation", position);
  return locator;
}

TEST(Transforms, RotationOrders) {
  const std::size_t orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
  const Point angles = {0.3, -0.7, 1.9}, point = {1, 2, -3};
  for (std::int32_t order = 0; order < 6; ++order) {
    SceneData scene = MakeScene();
    const ItemIndex locator = AddItem(scene, "locator", "turned");
    SetChannel(At(scene, AddVector(scene, locator, "rotation", angles)), "order", order);
    Point expected = point;
    for (const std::size_t axis : orders[order]) expected = Turned(expected, axis, angles[axis]);
    SCOPED_TRACE(order);
    ExpectNear(Transformed(point, HostRig(scene).World(locator, State::Evaluated)), expected);
  }
}

TEST(Transforms, StackWithPivotUnderParents) {
  const Point position = {5, -1, 2}, pivot = {0.5, 1, -2}, angles = {0, 0.8, 0}, scale = {2, 3, -1};
  const Point parentAngles = {kPi / 3, 0, 0}, parentPosition = {0, 10, 0}, point = {1, 2, 3};
  SceneData scene = MakeScene();
  const ItemIndex parent = AddItem(scene, "groupLocator", "parent");
  AddVector(scene, parent, "translation", parentPosition);
  AddVector(scene, parent, "rotation", parentAngles);
  const ItemIndex between = AddItem(scene, "group", "between", parent);
  const ItemIndex mesh = AddItem(scene, "mesh", "mesh", between);
  AddVector(scene, mesh, "translation", position);
  const ItemIndex pivotItem = AddVector(scene, mesh, "translation", pivot);
  AddVector(scene, mesh, "rotation", angles);
  At(scene, AddTransform(scene, mesh, "transform", "pivot back")).inverseOf = pivotItem;
  AddVector(scene, mesh, "scale", scale);

  Point expected = Sum(Scaled(point, scale), Scaled(pivot, {-1, -1, -1}));
  expected = Sum(Sum(Turned(expected, 1, angles[1]), pivot), position);
  expected = Sum(Turned(expected, 0, parentAngles[0]), parentPosition);
  const HostRig rig(scene);
  for (const State state : {State::Setup, State::Edit, State::Bind, State::Evaluated})
    ExpectNear(Transformed(point, rig.World(mesh, state)), expected);
  EXPECT_EQ(rig.host.Data().items[static_cast<std::size_t>(mesh)].mainTransforms[2], pivotItem - 1);
}

TEST(Transforms, MatricesAndInverses) {
  Matrix4 skew;
  skew(0, 1) = 0.5;
  skew(3, 2) = 4;
  SceneData scene = MakeScene();
  const ItemIndex locator = AddItem(scene, "locator", "skewed");
  const ItemIndex first = AddTransform(scene, locator, "transform", "a");
  const ItemIndex second = AddTransform(scene, locator, "transform", "b");
  At(scene, first).matrix = skew;
  At(scene, second).inverseOf = first;
  const ItemIndex third = AddTransform(scene, AddItem(scene, "locator", "third"), "transform", "c");
  At(scene, third).inverseOf = second;
  const ItemIndex lost = AddItem(scene, "locator", "lost");
  const ItemIndex circle = AddTransform(scene, lost, "transform", "d");
  At(scene, circle).inverseOf = circle;
  const HostRig rig(scene);
  EXPECT_EQ(rig.World(locator, State::Evaluated), Matrix4());
  EXPECT_EQ(rig.World(third - 1, State::Evaluated), skew) << "the inverse of an inverse";
  EXPECT_EQ(rig.World(lost, State::Evaluated), Matrix4());
}

TEST(Transforms, CircularHierarchies) {
  SceneData circle;
  const ItemIndex a = AddPlaced(circle, {1, 0, 0}), b = AddPlaced(circle, {2, 0, 0}, a);
  At(circle, a).parent = b;
  CZyUser_Item parent;
  const HostRig round(circle);
  EXPECT_TRUE(ZyFailed(round.Item(a).Parent(parent)));
  EXPECT_EQ(round.World(b, State::Evaluated)(3, 0), 2);
}

// Hermite segments reproduce a cubic exactly, so a cubic is the independent formula.
TEST(Envelopes, CubicSegments) {
  const auto f = [](double t) { return t * t * t - 2 * t + 1; };
  const auto slope = [](double t) { return 3 * t * t - 2; };
  EnvelopeData curve;
  for (const double t : {-1.0, 0.5, 3.0})
    curve.keys.push_back({t, f(t), Interpolation::Cubic, slope(t), slope(t)});
  curve.before = curve.after = Extrapolation::Linear;
  SceneData scene = MakeScene();
  const ItemIndex item = AddItem(scene, "locator", "curve");
  SetChannel(At(scene, item), "value", 0.0);
  ChannelOf(scene, item, "value").extras.Make().envelope = curve;
  const HostRig rig(scene);
  for (double t = -1; t <= 3; t += 0.125) EXPECT_NEAR(rig.Number(item, "value", State::Evaluated, t), f(t), 1e-12);
  EXPECT_NEAR(rig.Number(item, "value", State::Evaluated, -3), f(-1) - 2 * slope(-1), 1e-12);
  EXPECT_NEAR(rig.Number(item, "value", State::Evaluated, 5), f(3) + 2 * slope(3), 1e-12);
}

TEST(Envelopes, InsideAndOutside) {
  struct Case {
    Interpolation interpolation;
    Extrapolation outside;
    double time, value;
  };
  // Keys (1, 10), (2, 20), (4, 0).
  const Case cases[] = {
      {Interpolation::Step, Extrapolation::Constant, 1.999, 10},
      {Interpolation::Step, Extrapolation::Constant, 2, 20},
      {Interpolation::Linear, Extrapolation::Constant, 1.25, 12.5},
      {Interpolation::Linear, Extrapolation::Constant, 3, 10},
      {Interpolation::Linear, Extrapolation::Constant, 0, 10},
      {Interpolation::Linear, Extrapolation::Constant, 9, 0},
      {Interpolation::Linear, Extrapolation::Linear, 0, 0},
      {Interpolation::Linear, Extrapolation::Linear, 5, -10},
      {Interpolation::Step, Extrapolation::Linear, 5, 0},
      {Interpolation::Linear, Extrapolation::Repeat, 4, 0},
      {Interpolation::Linear, Extrapolation::Repeat, 4.5, 15},
      {Interpolation::Linear, Extrapolation::Repeat, 0, 10},
      {Interpolation::Linear, Extrapolation::Repeat, -5.5, 5},
      {Interpolation::Linear, Extrapolation::Oscillate, 5, 10},
      {Interpolation::Linear, Extrapolation::Oscillate, 0.5, 15},
      {Interpolation::Linear, Extrapolation::Oscillate, 7.5, 15},
      {Interpolation::Linear, Extrapolation::Oscillate, -5, 10},
  };
  for (const Case& given : cases) {
    SceneData scene = MakeScene();
    EnvelopeData curve = Keys({{1, 10}, {2, 20}, {4, 0}});
    for (KeyData& key : curve.keys) key.interpolation = given.interpolation;
    curve.before = curve.after = given.outside;
    ChannelOf(scene, 0, "time").extras.Make().envelope = curve;
    EXPECT_NEAR(HostRig(scene).Number(0, "time", State::Evaluated, given.time), given.value, 1e-12)
        << given.time << " outside " << static_cast<int>(given.outside);
  }
}

TEST(Envelopes, OneKeyHoldsEverywhere) {
  SceneData scene = MakeScene();
  EnvelopeData curve = Keys({{1, 7}});
  curve.before = curve.after = Extrapolation::Repeat;
  ChannelOf(scene, 0, "time").extras.Make().envelope = curve;
  const HostRig rig(scene);
  for (const double time : {-2.0, 1.0, 5.0}) EXPECT_EQ(rig.Number(0, "time", State::Evaluated, time), 7);
}

TEST(Clips, SwapValuesInAndOut) {
  SceneData scene = MakeScene();
  const ItemIndex locator = AddPlaced(scene, {1, 0, 0});
  const ItemIndex position = locator + 1;
  const ItemIndex actor = AddItem(scene, "group", "actor");
  const ItemIndex run = AddItem(scene, "actionclip", "run"), walk = AddItem(scene, "actionclip", "walk");
  const ItemIndex other = AddItem(scene, "actionclip", "of nobody");
  At(scene, actor).group->items = {run, walk, locator};
  At(scene, run).clip->channels = {{Ref(scene, position, "pos.X"), Keys({{0, 10}, {1, 20}})},
                                   {Ref(scene, position, "pos.Y"), ChannelValue(5.0)}};
  At(scene, walk).clip->channels = {{Ref(scene, position, "pos.X"), ChannelValue(7.0)}};
  At(scene, walk).clip->active = true;
  At(scene, other).clip->active = true;
  At(scene, other).clip->enabled = false;
  ChannelOf(scene, position, "pos.X").extras.Make().envelope = Keys({{0, 100}});

  const HostRig rig(scene);
  CZyUser_ActionClip runClip, walkClip, otherClip;
  ASSERT_TRUE(runClip.Set(rig.Item(run).Raw()) && walkClip.Set(rig.Item(walk).Raw()) &&
              otherClip.Set(rig.Item(other).Raw()));
  // Both reads are held while clips come and go.
  const CZyUser_ChannelRead edit = rig.Read(State::Edit), evaluated = rig.Read(State::Evaluated, 0.5);
  const std::int32_t x = rig.Channel(position, "pos.X");
  const auto expect = [&](double atStart, double atHalf, double y, int animated) {
    double value = 0;
    EXPECT_EQ(edit.Double(rig.Item(position), x, value), ZYe_OK);
    EXPECT_EQ(value, atStart);
    EXPECT_EQ(edit.IsAnimated(rig.Item(position), x), animated);
    EXPECT_EQ(rig.World(locator, evaluated)(3, 0), atHalf);
    EXPECT_EQ(rig.World(locator, evaluated)(3, 1), y);
    EXPECT_EQ(rig.World(locator, State::Bind)(3, 0), 1) << "the setup doesn't follow clips";
  };
  EXPECT_EQ(walkClip.Active(), 1);
  expect(7, 7, 0, 0);
  EXPECT_EQ(runClip.SetActive(1), ZYe_OK);
  EXPECT_EQ(walkClip.Active(), 0) << "one clip of an actor is in force";
  EXPECT_EQ(otherClip.Active(), 1) << "clips of others stay";
  expect(10, 15, 5, 1);
  EXPECT_EQ(runClip.SetActive(0), ZYe_OK);
  expect(100, 100, 0, 1);
  EXPECT_EQ(runClip.Enabled(), 1);
  EXPECT_EQ(otherClip.Enabled(), 0);
}

TEST(Links, DriveNumbers) {
  SceneData scene = MakeScene();
  const ItemIndex item = AddItem(scene, "locator", "driven");
  for (const char* name : {"a", "b", "c", "x", "y", "self"}) SetChannel(At(scene, item), name, 1.0);
  SetChannel(At(scene, item), "count", std::int32_t{0});
  SetChannel(At(scene, item), "text", std::string("t"));
  ChannelOf(scene, item, "a").extras.Make().envelope = Keys({{0, 0}, {1, 8}});
  const auto link = [&](const char* from, const char* to, double factor, double offset) {
    scene.channelLinks.push_back({Ref(scene, item, from), Ref(scene, item, to), factor, offset});
  };
  link("a", "b", 2, 1);
  link("b", "c", -1, 0);
  link("b", "count", 0.3, 0);
  link("x", "y", 1, 1);
  link("y", "x", 1, 1);
  link("self", "self", 2, 0);
  link("a", "text", 1, 0);
  const HostRig rig(scene);
  EXPECT_EQ(rig.Number(item, "c", State::Evaluated, 0.5), -9);
  EXPECT_EQ(rig.Number(item, "count", State::Evaluated, 0.5), 2) << "an integer channel cuts";
  EXPECT_EQ(rig.Number(item, "b", State::Bind), 3);
  EXPECT_EQ(rig.Number(item, "b", State::Edit, 0.5), 1) << "a layer shows what it stores";
  for (const char* name : {"x", "y", "self"})
    EXPECT_EQ(rig.Number(item, name, State::Evaluated), 1) << "in a circle a channel keeps its own value";
}

// Numbers along a chain are kept from one question to the next, so each state must be told from the others.
TEST(Links, AChainFollowsTimeLayerAndClips) {
  constexpr int kLength = 300;
  SceneData scene = MakeScene();
  const ItemIndex item = AddItem(scene, "locator", "driven");
  const auto name = [](int place) { return "c" + std::to_string(place); };
  for (int place = 0; place <= kLength; ++place) SetChannel(At(scene, item), name(place), 0.0);
  ChannelOf(scene, item, name(0)).extras.Make().envelope = Keys({{0, 0}, {1, 100}});
  for (int place = kLength; place > 0; --place)
    scene.channelLinks.push_back({Ref(scene, item, name(place - 1)), Ref(scene, item, name(place)), 1, 1});
  const ItemIndex clip = AddItem(scene, "actionclip", "clip");
  At(scene, clip).clip->channels = {{Ref(scene, item, name(0)), ChannelValue(1000.0)}};
  const HostRig rig(scene);
  const auto expectStarts = [&](double early, double late, double bind) {
    for (const int place : {kLength / 2, kLength, 1, kLength}) {
      EXPECT_EQ(rig.Number(item, name(place), State::Evaluated, 0.25), early + place);
      EXPECT_EQ(rig.Number(item, name(place), State::Evaluated, 0.75), late + place);
      EXPECT_EQ(rig.Number(item, name(place), State::Bind), bind + place);
    }
  };
  expectStarts(25, 75, 0);
  CZyUser_ActionClip active;
  ASSERT_TRUE(active.Set(rig.Item(clip).Raw()));
  active.SetActive(1);
  expectStarts(1000, 1000, 0);
  active.SetActive(0);
  expectStarts(25, 75, 0);
}

// What a target's world becomes when one of its matrices is driven by the source's matrix of the same name.
TEST(Links, DriveMatrices) {
  SceneData scene = MakeScene();
  const ItemIndex sourceParent = AddPlaced(scene, {100, 0, 0});
  const ItemIndex source = AddPlaced(scene, {10, 0, 0}, sourceParent);
  AddVector(scene, source, "rotation", {0, 0, kPi / 2});
  AddVector(scene, source, "scale", {2, 2, 2});
  const ItemIndex targetParent = AddPlaced(scene, {0, 1000, 0});
  const ItemIndex target = AddPlaced(scene, {0, 1, 0}, targetParent);
  AddVector(scene, target, "scale", {3, 3, 3});
  struct Case {
    const char* channel;
    Point origin, unitX;  // images of (0, 0, 0) and (1, 0, 0)
  };
  const Case cases[] = {
      {"worldMatrix", {110, 0, 0}, {110, 2, 0}},     {"wposMatrix", {110, 0, 0}, {113, 0, 0}},
      {"wrotMatrix", {0, 1001, 0}, {0, 1004, 0}},    {"wsclMatrix", {0, 1001, 0}, {2, 1001, 0}},
      {"localMatrix", {10, 1000, 0}, {10, 1002, 0}}, {"parentMatrix", {100, 1, 0}, {103, 1, 0}},
  };
  for (const Case& given : cases) {
    SCOPED_TRACE(given.channel);
    SceneData linked = scene;
    linked.channelLinks = {{Ref(linked, source, given.channel), Ref(linked, target, given.channel)}};
    const HostRig rig(linked);
    for (const State state : {State::Bind, State::Evaluated}) {
      ExpectNear(Transformed({0, 0, 0}, rig.World(target, state)), given.origin);
      ExpectNear(Transformed({1, 0, 0}, rig.World(target, state)), given.unitX);
    }
  }
}

TEST(Links, MatrixCirclesKeepOwnValues) {
  SceneData scene = MakeScene();
  const ItemIndex parent = AddPlaced(scene, {1, 0, 0});
  const ItemIndex child = AddPlaced(scene, {2, 0, 0}, parent);
  const ItemIndex free = AddPlaced(scene, {5, 0, 0});
  scene.channelLinks = {{Ref(scene, child, "worldMatrix"), Ref(scene, parent, "worldMatrix")},
                        {Ref(scene, free, "parentMatrix"), Ref(scene, free, "parentMatrix")},
                        {Ref(scene, child, "worldMatrix"), Ref(scene, free, "localMatrix")}};
  const HostRig rig(scene);
  EXPECT_EQ(rig.World(parent, State::Evaluated)(3, 0), 1);
  EXPECT_EQ(rig.World(child, State::Evaluated)(3, 0), 3);
  EXPECT_EQ(rig.World(free, State::Evaluated)(3, 0), 3) << "a link beside the circle is followed";
}

TEST(RecordedWorlds, AreReplayed) {
  Matrix4 bind, first, second;
  bind(3, 0) = 1;
  first(3, 0) = 0.1;
  second(3, 0) = 0.3;
  SceneData scene = MakeScene();
  const ItemIndex item = AddPlaced(scene, {50, 0, 0}), child = AddPlaced(scene, {0, 2, 0}, item);
  RecordedWorld world{bind, {{1, first}, {2, second}}, false};
  At(scene, item).world = world;
  const HostRig hold(scene);
  for (const State state : {State::Setup, State::Bind}) EXPECT_EQ(hold.World(item, state), bind);
  EXPECT_EQ(hold.World(item, State::Evaluated, 0), first);
  EXPECT_EQ(hold.World(item, State::Evaluated, 1.999), first);
  EXPECT_EQ(hold.World(item, State::Evaluated, 2), second);
  EXPECT_EQ(hold.World(item, State::Evaluated, 9), second);
  EXPECT_EQ(hold.World(child, State::Evaluated, 2)(3, 0), 0.3) << "children follow the recording";

  world.linear = true;
  world.bind.reset();
  At(scene, item).world = world;
  const HostRig linear(scene);
  EXPECT_EQ(linear.World(item, State::Bind), first);
  EXPECT_DOUBLE_EQ(linear.World(item, State::Evaluated, 1.5)(3, 0), 0.2);
  EXPECT_EQ(linear.World(item, State::Evaluated, 1), first);
}

// Reads share storage one after another; none may see another's matrices.
TEST(ChannelReads, KeepTheirOwnTime) {
  SceneData scene = MakeScene();
  const ItemIndex item = AddPlaced(scene, {0, 0, 0});
  EnvelopeData curve = Keys({{0, 0}, {1, 1}});
  curve.after = Extrapolation::Linear;
  ChannelOf(scene, item + 1, "pos.X").extras.Make().envelope = curve;
  const HostRig rig(scene);
  const CZyUser_ChannelRead early = rig.Read(State::Evaluated, 0.25);
  EXPECT_EQ(rig.World(item, early)(3, 0), 0.25);
  CZyUser_ChannelRead read;
  for (double time = 0; time < 8; time += 0.5) {
    read = rig.Read(State::Evaluated, time);
    EXPECT_EQ(rig.World(item, read)(3, 0), time);
  }
  EXPECT_EQ(rig.World(item, early)(3, 0), 0.25);
}

}  // namespace
