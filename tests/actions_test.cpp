// Actors and their action clips.

#include "tests/support/motion_scene.h"

#include <gmock/gmock.h>

namespace {

using namespace motion;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// An actor with the clips "walk" (moves X by 1 a second), "run" (by 5) and the disabled "rest". The scene by
// itself moves X by 100 a second.
struct ActorScene {
  SceneData scene;
  ItemIndex sceneItem = AddSceneItem(scene, 0, 1, 1);
  Mover hero = AddMover(scene, "hero");
  ItemIndex actor = AddActor(scene, sceneItem, "Hero Actor");
  ItemIndex walk = AddClip(scene, actor, "walk", "A_");
  ItemIndex rest = AddClip(scene, actor, "rest");
  ItemIndex run = AddClip(scene, actor, "run");

  ActorScene() {
    const ChannelRef x = Component(scene, hero.position, Axis::X);
    Key(scene, hero.position, Axis::X, Line(0, 0, 1, 100));
    KeyInClip(scene, walk, x, Line(0, 0, 1, 1));
    KeyInClip(scene, run, x, Line(0, 0, 1, 5));
    KeyInClip(scene, rest, x, Line(0, 0, 1, 9));
    At(scene, rest).clip->enabled = false;
    At(scene, actor).group->items.push_back(hero.item);
  }
  void Export(std::int32_t type) { scene.userValues["sceneio.gltf.save.exportActionType"] = type; }
  void Activate(ItemIndex clip) { At(scene, clip).clip->active = true; }
};

std::vector<std::string> Names(const Save& save) {
  std::vector<std::string> names;
  for (const auto& animation : save.Animations()) names.push_back(animation->name);
  return names;
}

// How far "hero" moves in a second, per animation.
std::vector<double> Speeds(const Save& save) {
  std::vector<double> speeds;
  for (std::size_t place = 0; place < save.Animations().size(); ++place) {
    const GltfAnimationSampler* sampler = save.Find("hero", GltfPath::Translation, place);
    speeds.push_back(sampler ? sampler->keyframes.at(1).value[0] : -1);
  }
  return speeds;
}

std::vector<std::string> ActiveClips(const Save& save) {
  std::vector<std::string> active;
  for (IZyItem* item : save.state->animation.actor.actions) {
    CZyUser_ActionClip clip;
    CZyUser_Item clipItem;
    clipItem.Set(item);
    if (clip.Set(item) && clip.Active() != 0) active.push_back(NameOf(clipItem));
  }
  return active;
}

TEST(Actions, WholeSceneIsUnnamed) {
  ActorScene actor;
  Save save(std::move(actor.scene));
  ExportAnimation(*save.state);
  EXPECT_THAT(Names(save), ElementsAre(""));
  EXPECT_THAT(Speeds(save), ElementsAre(100));
  EXPECT_EQ(save.CountLog("Actor:Hero Actor items:"), 0u);
}

TEST(Actions, EveryActionInOrder) {
  ActorScene actor;
  actor.Export(1);
  Save save(std::move(actor.scene));
  EXPECT_EQ(save.CountLog("---   Actor:Hero Actor actions:2 items:1 chans:0"), 1u);
  ExportAnimation(*save.state);
  EXPECT_EQ(save.CountLog("Actor:Hero Actor items:1 channels:0 actions:2"), 1u);
  EXPECT_THAT(Names(save), ElementsAre("A_walk", "run"));
  EXPECT_THAT(Speeds(save), ElementsAre(1, 5));
  EXPECT_THAT(ActiveClips(save), IsEmpty());  // as it was
  EXPECT_EQ(save.CountLog("Getting animation time range for actor: A_walk"), 1u);
  EXPECT_EQ(save.state->log.WarningCount() + save.state->log.ErrorCount(), 0u);
}

TEST(Actions, ActiveClipComesBack) {
  ActorScene actor;
  actor.Export(1);
  actor.Activate(actor.walk);
  Save save(std::move(actor.scene));
  ExportAnimation(*save.state);
  EXPECT_THAT(Speeds(save), ElementsAre(1, 5));
  EXPECT_THAT(ActiveClips(save), ElementsAre("walk"));
}

TEST(Actions, ActiveActionAlone) {
  ActorScene actor;
  actor.Export(2);
  actor.Activate(actor.run);
  Save save(std::move(actor.scene));
  ExportAnimation(*save.state);
  EXPECT_THAT(Names(save), ElementsAre("run"));
  EXPECT_THAT(Speeds(save), ElementsAre(5));
  EXPECT_THAT(ActiveClips(save), ElementsAre("run"));
}

TEST(Actions, NothingToExport) {
  for (const std::int32_t type : {2, 3, -1}) {  // 2: no enabled clip is active
    SCOPED_TRACE(type);
    ActorScene actor;
    actor.Export(type);
    actor.Activate(actor.rest);
    Save save(std::move(actor.scene));
    ExportAnimation(*save.state);
    EXPECT_THAT(Names(save), IsEmpty());
    EXPECT_EQ(save.CountLog("Actor:Hero Actor items:1 channels:0 actions:2"), 1u);
  }
  SceneData scene;
  AddSceneItem(scene, 0, 1, 1);
  Key(scene, AddMover(scene, "a").position, Axis::X, Line(0, 0, 1, 1));
  scene.userValues["sceneio.gltf.save.exportActionType"] = 1;
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  EXPECT_THAT(Names(save), IsEmpty());
  EXPECT_EQ(save.CountLog("Actor: items:0 channels:0 actions:0"), 1u);
}

TEST(Actions, OptionSwitchesAnimationOff) {
  ActorScene actor;
  actor.scene.userValues["sceneio.gltf.save.animation"] = 0;
  Save save(std::move(actor.scene));
  ExportAnimation(*save.state);
  EXPECT_THAT(Names(save), IsEmpty());
}

TEST(Actors, ItemsComeOnceAlsoThroughChannels) {
  ActorScene actor;
  SceneData& scene = actor.scene;
  const Mover arm = AddMover(scene, "arm");
  auto& group = *At(scene, actor.actor).group;
  group.channels.push_back(Component(scene, arm.rotation, Axis::X));
  group.channels.push_back(Component(scene, actor.hero.position, Axis::X));
  headless::SetChannel(At(scene, arm.item), "own", 0.0);
  group.channels.push_back(NamedChannel(scene, arm.item, "own"));
  AddActor(scene, actor.sceneItem, "Second");
  Save save(std::move(scene));
  std::vector<std::string> names;
  for (IZyItem* raw : save.state->animation.actor.items) {
    CZyUser_Item item;
    item.Set(raw);
    names.push_back(NameOf(item));
  }
  EXPECT_THAT(names, ElementsAre("hero", "arm"));
  EXPECT_EQ(save.state->animation.actor.channelCount, 3u);
  EXPECT_EQ(save.CountLog("Second"), 0u);
}

TEST(Actors, WarnsOfAnimatedItemsWithoutNode) {
  ActorScene actor;
  actor.Export(2);
  actor.Activate(actor.walk);
  SceneData& scene = actor.scene;
  const ItemIndex light = headless::AddItem(scene, "light", "lamp");
  headless::SetChannel(At(scene, light), "one", 0.0);
  headless::SetChannel(At(scene, light), "two", 0.0);
  for (const char* name : {"one", "two"})
    Channel(scene, NamedChannel(scene, light, name)).extras.Make().setupEnvelope = Line(0, 0, 1, 1);
  const ItemIndex still = headless::AddItem(scene, "light", "still");
  auto& items = At(scene, actor.actor).group->items;
  items.push_back(light);
  items.push_back(still);
  Save save(std::move(scene));
  ExportAnimation(*save.state);
  std::uint32_t type = 0;
  save.state->sceneService.ItemTypeLookup("light", type);
  EXPECT_EQ(save.CountLog("Unable to get time range for item:lamp, type:light (" + std::to_string(type) +
                          ") with 2 animated channels"),
            1u);
  EXPECT_EQ(save.state->log.WarningCount(), 1u);
}

struct TagCase {
  headless::CommandState command;
  const char* name;  // of the first animation
  const char* text;  // logged for each clip
  std::uint32_t errors;
};

TEST(ClipTags, ComeFromTheHostsCommand) {
  using headless::CommandState;
  const TagCase cases[] = {
      {CommandState::Works, "A_walk", "    Success - FB prefix and suffix added to action clip names.", 0},
      {CommandState::Absent, "walk", "    Failed to create command item.exportTags.", 2},
      {CommandState::Fails, "walk", "    Command failed - ", 2},
  };
  for (const TagCase& c : cases) {
    SCOPED_TRACE(c.text);
    ActorScene actor;
    actor.Export(1);
    actor.scene.exportTagsCommand = c.command;
    Save save(std::move(actor.scene));
    ExportAnimation(*save.state);
    EXPECT_THAT(Names(save), ElementsAre(c.name, "run"));
    EXPECT_EQ(save.CountLog(c.text), 2u);
    EXPECT_EQ(save.state->log.ErrorCount(), c.errors);
  }
}

}  // namespace
