// The headless host's services, its log, its command and its layers of channels; and the wrapper that makes calls
// fail.
#include "host/user_command.h"
#include "host/user_mesh.h"
#include "tests/support/failing_host.h"
#include "tests/support/host_rig.h"

#include <gmock/gmock.h>

namespace {

using namespace headless;
using test_support::At;
using test_support::ChannelOf;
using test_support::FailingHost;
using test_support::HostRig;
using test_support::Keys;
using test_support::State;
using testing::ElementsAre;
using testing::Pair;

TEST(Services, SelectionPlatformAndUserValues) {
  SceneData scene = MakeScene();
  const ItemIndex a = AddItem(scene, "locator", "a"), b = AddItem(scene, "locator", "b");
  scene.selection = {b, 900, a, b};
  scene.renderCameras = {b};
  scene.application.version = {10, 2, 3};
  scene.userValues["x.y"] = -4;
  HostRig rig(scene);
  std::vector<CZyUser_Item> selected;
  CZyItemSelection().GetList(selected);
  ASSERT_EQ(selected.size(), 4u);
  EXPECT_EQ(selected[0].Raw(), rig.Item(b).Raw());
  EXPECT_TRUE(selected[1].Empty());
  EXPECT_EQ(selected[2].Raw(), rig.Item(a).Raw());
  EXPECT_EQ(CZySelectionService().LookupType("edge"), 0u);

  std::int32_t parts[3] = {}, version = 0;
  EXPECT_EQ(CZyPlatformService().AppVersionParts(parts), ZYe_OK);
  EXPECT_THAT(parts, ElementsAre(10, 2, 3));
  EXPECT_EQ(CZyPlatformService().AppVersion(version), ZYe_OK);
  EXPECT_EQ(version, 1023);

  rig.host.SetUserValue("later", 5);
  CZyUser_UserValue value;
  EXPECT_EQ(CZyValueService().Query("x.y", value), ZYe_OK);
  EXPECT_EQ(value.GetInt(), -4);
  EXPECT_EQ(CZyValueService().Query("later", value), ZYe_OK);
  EXPECT_EQ(value.GetInt(), 5);
  EXPECT_TRUE(ZyFailed(CZyValueService().Query("unset", value)));
  EXPECT_TRUE(ZyFailed(CZyValueService().Query(nullptr, value)));

  CZyUser_Item camera;
  EXPECT_EQ(rig.scene.RenderCameraByIndex(0, camera), ZYe_OK);
  EXPECT_EQ(camera.Raw(), rig.Item(b).Raw());
  EXPECT_TRUE(ZyFailed(rig.scene.RenderCameraByIndex(1, camera)));
}

TEST(Services, InstanceSources) {
  SceneData scene = MakeScene();
  const ItemIndex mesh = AddItem(scene, "mesh", "mesh"), instance = AddItem(scene, "meshInst", "i");
  const ItemIndex chained = AddItem(scene, "meshInst", "ii"), circular = AddItem(scene, "meshInst", "iii");
  At(scene, instance).instanceSource = mesh;
  At(scene, chained).instanceSource = instance;
  At(scene, circular).instanceSource = circular;
  const ItemIndex unbound = AddItem(scene, "meshInst", "iv");
  const HostRig rig(scene);
  CZyUser_Item source;
  for (const ItemIndex item : {instance, chained}) {
    EXPECT_EQ(CZySceneService().MeshInstanceSource(rig.Item(item), source), ZYe_OK);
    EXPECT_EQ(source.Raw(), rig.Item(mesh).Raw());
  }
  // An instance of no mesh is its own source, with an empty mesh: a save must not fail over it.
  for (const ItemIndex item : {circular, unbound}) {
    EXPECT_EQ(CZySceneService().MeshInstanceSource(rig.Item(item), source), ZYe_OK);
    std::int32_t channel = -1;
    CZyUser_Mesh empty;
    EXPECT_EQ(source.ChannelLookup("mesh", channel), ZYe_OK);
    EXPECT_EQ(rig.Read(test_support::State::Setup).ValueObject(source, channel, empty), ZYe_OK);
    std::uint32_t points = 1;
    EXPECT_EQ(empty.PointCount(points), ZYe_OK);
    EXPECT_EQ(points, 0u);
  }
  EXPECT_TRUE(ZyFailed(CZySceneService().MeshInstanceSource(rig.Item(mesh), source)));
}

TEST(Messages, TablesArgumentsAndShortBuffers) {
  const HostRig rig(MakeScene());
  const CZyMessageService service;
  std::string text = "kept";
  EXPECT_EQ(service.TableText("common", 2402, text), ZYe_OK);
  EXPECT_EQ(text, "load/save");
  EXPECT_TRUE(ZyFailed(service.TableText("common", 1, text)));
  EXPECT_TRUE(ZyFailed(service.TableText("other", 2402, text)));
  EXPECT_EQ(text, "load/save");

  CZyUser_Message message;
  ASSERT_EQ(service.NewMessage(message), ZYe_OK);
  const std::string longText = std::string(3000, 'x') + " %1 end";
  EXPECT_EQ(message.SetCode(ZYe_FAILED), ZYe_OK);
  EXPECT_EQ(message.SetMessage("common", 2020), ZYe_OK);
  EXPECT_EQ(message.SetArgument(1, longText.c_str()), ZYe_OK);
  EXPECT_TRUE(ZyFailed(message.SetArgument(0, "none")));
  EXPECT_EQ(message.Code(), ZYe_FAILED);
  EXPECT_EQ(service.MessageText(message, text), ZYe_OK);
  EXPECT_EQ(text, longText) << "arguments aren't searched for arguments";
  std::vector<char> buffer(longText.size() + 1, '?');
  const auto size = static_cast<std::uint32_t>(buffer.size());
  EXPECT_EQ(service.Raw()->MessageText(message.Raw(), buffer.data(), size - 1), ZYe_SHORT_BUFFER);
  EXPECT_EQ(service.Raw()->MessageText(message.Raw(), buffer.data(), size), ZYe_OK);
}

using Lines = std::vector<std::pair<LogLine::Kind, std::string>>;

class LogRig : public HostRig {
 public:
  LogRig() : HostRig(MakeScene()) {
    host.SetLogSink([this](const LogLine& line) { lines.emplace_back(line.kind, line.text); });
  }

  CZyUser_LogEntry Entry(zyresult severity, const char* text) const {
    CZyUser_LogEntry entry;
    EXPECT_EQ(service_.NewEntry(severity, text, entry), ZYe_OK);
    return entry;
  }
  CZyUser_Log Log(const char* name) const {
    CZyUser_Log log;
    EXPECT_EQ(service_.SubSystemLookup(name, log), ZYe_OK);
    return log;
  }
  CZyUser_LogEntry Block(zyresult severity, const char* text) const {
    CZyUser_LogEntry block = Entry(severity, "title");
    EXPECT_EQ(block.AddChild(Entry(severity, text)), ZYe_OK);
    EXPECT_EQ(Log("io-status").AddEntry(block), ZYe_OK);
    return block;
  }
  void Show(zyresult code, const char* text) const {
    CZyUser_Message message;
    CZyMessageService().NewMessage(message);
    message.SetCode(code);
    message.SetMessage("common", 2020);
    message.SetArgument(1, text);
    EXPECT_EQ(CZyStdDialogService().ShowMessage(message), ZYe_OK);
  }
  void AddMessage(zyresult severity, const char* text) const {
    EXPECT_EQ(Log("logsys").AddEntry(Entry(severity, text)), ZYe_OK);
  }

  Lines lines;

 private:
  CZyLogService service_;
};

using Kind = LogLine::Kind;

TEST(Log, BlocksAndMessagesInOrder) {
  LogRig rig;
  const CZyUser_LogEntry block = rig.Block(kSeverityInfo, "start");
  block.AddChild(rig.Entry(kSeverityInfo, "   nested \n"));
  rig.AddMessage(kSeverityWarning, "doubt");
  rig.AddMessage(kSeverityError, "bad");
  block.AddChild(rig.Entry(kSeverityInfo, "on"));
  rig.Block(kSeverityWarning, "error block");
  rig.Block(kSeverityInfo, "second");
  EXPECT_THAT(rig.lines,
              ElementsAre(Pair(Kind::Setup, "start"), Pair(Kind::Info, "   nested \n"),
                          Pair(Kind::Warning, "doubt"), Pair(Kind::Error, "bad"), Pair(Kind::Info, "on"),
                          Pair(Kind::Warning, "error block"), Pair(Kind::Setup, "second")));
  CZyUser_Log log;
  EXPECT_TRUE(ZyFailed(CZyLogService().SubSystemLookup("nowhere", log)));
  EXPECT_TRUE(ZyFailed(block.AddChild(CZyUser_LogEntry())));
}

TEST(Log, ADialogAndItsMessageAreOneLine) {
  LogRig rig;
  rig.AddMessage(kSeverityWarning, "summary");
  rig.Show(kSeverityWarning, "summary");
  rig.AddMessage(kSeverityWarning, "summary");  // a message of its own
  rig.Show(kSeverityError, "failed");
  rig.AddMessage(kSeverityError, "failed");
  rig.AddMessage(kSeverityError, "failed");
  rig.AddMessage(kSeverityWarning, "other");
  rig.Show(kSeverityError, "alone");
  rig.AddMessage(kSeverityWarning, "last");
  const Lines expected = {{Kind::WarningDialog, "summary"}, {Kind::Warning, "summary"},
                          {Kind::ErrorDialog, "failed"},    {Kind::Error, "failed"},
                          {Kind::Warning, "other"},         {Kind::ErrorDialog, "alone"}};
  EXPECT_EQ(rig.lines, expected);
  rig.host.FlushLog();
  EXPECT_EQ(rig.lines.size(), expected.size() + 1);
  EXPECT_EQ(rig.lines.back().second, "last");
}

struct TagAnswer {
  zyresult query = ZYe_OK, code = ZYe_OK;
  std::string tag, message;
};

// Asks the command for a clip's tag; nothing when there is no such command.
std::optional<TagAnswer> AskForTag(const CZyUser_Item& clip) {
  const CZyCommandService service;
  CZyUser_Command command;
  if (ZyFailed(service.NewCommand("item.exportTags", command))) return std::nullopt;
  CZyUser_Attributes attributes;
  EXPECT_TRUE(attributes.Set(command.Raw()));
  const auto argument = [&](const char* name) {
    std::int32_t index = -1;
    EXPECT_EQ(attributes.Lookup(name, index), ZYe_OK);
    return index;
  };
  CZyUser_ValueReference reference;
  EXPECT_EQ(attributes.Value(argument("item"), reference), ZYe_OK);
  EXPECT_EQ(ZySucceeded(reference.SetObject(clip.Raw())), !clip.Empty());
  EXPECT_EQ(attributes.SetString(argument("itemType"), "actionclip"), ZYe_OK);
  EXPECT_EQ(attributes.SetInt(argument("tagType"), 0), ZYe_OK);
  EXPECT_EQ(attributes.SetString(argument("tag"), ""), ZYe_OK);
  EXPECT_TRUE(ZyFailed(attributes.SetInt(argument("tag"), 0)));
  EXPECT_TRUE(ZyFailed(attributes.SetString(-1, "")));

  TagAnswer answer;
  CZyUser_ValueArray values;
  CZyUser_Message message;
  answer.query = service.QueryArgument(command, argument("tag"), values);
  values.String(0, answer.tag);
  EXPECT_EQ(command.Message(message), ZYe_OK);
  answer.code = message.Code();
  CZyMessageService().MessageText(message, answer.message);
  return answer;
}

TEST(Command, TellsTheTagOfAClip) {
  SceneData scene = MakeScene();
  const ItemIndex clip = AddItem(scene, "actionclip", "clip"), other = AddItem(scene, "locator", "no clip");
  At(scene, clip).clip->exportTag = std::string(1500, 't');
  {
    const HostRig rig(scene);
    const auto answer = AskForTag(rig.Item(clip));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->query, ZYe_OK);
    EXPECT_EQ(answer->code, ZYe_OK);
    EXPECT_EQ(answer->tag, scene.items[static_cast<std::size_t>(clip)].clip->exportTag);
    for (const CZyUser_Item& item : {rig.Item(other), CZyUser_Item()}) {
      EXPECT_TRUE(ZyFailed(AskForTag(item)->query));
      EXPECT_TRUE(ZyFailed(AskForTag(item)->code));
    }
    CZyUser_Command command;
    EXPECT_TRUE(ZyFailed(CZyCommandService().NewCommand("item.delete", command)));
  }
  scene.exportTagsCommand = CommandState::Fails;
  const HostRig failing(scene);
  const auto failed = AskForTag(failing.Item(clip));
  ASSERT_TRUE(failed);
  EXPECT_TRUE(ZyFailed(failed->code));
  EXPECT_NE(failed->message, "");
  scene.exportTagsCommand = CommandState::Absent;
  const HostRig absent(scene);
  EXPECT_FALSE(AskForTag(absent.Item(clip)));
}

// Each row: what a channel holds, and what the states show of it at time 1.
TEST(Layers, ValuesAndCurvesByState) {
  struct Case {
    std::optional<double> edit, setupCurve, curve;
    double setup, edited;
    int setupAnimated, editAnimated;
  };
  const Case cases[] = {
      {{}, {}, {}, 1, 1, 0, 0},   {2.0, {}, {}, 1, 2, 0, 0}, {{}, 3.0, {}, 3, 3, 1, 0},
      {2.0, 3.0, {}, 3, 2, 1, 0}, {{}, {}, 4.0, 1, 4, 0, 1}, {2.0, 3.0, 4.0, 3, 4, 1, 1},
  };
  for (const Case& given : cases) {
    SceneData scene = MakeScene();
    ChannelData& channel = ChannelOf(scene, 0, "time");
    channel.setup = 1.0;
    if (given.edit) channel.extras.Make().edit = *given.edit;
    if (given.setupCurve) channel.extras.Make().setupEnvelope = Keys({{0, *given.setupCurve}});
    if (given.curve) channel.extras.Make().envelope = Keys({{0, *given.curve}});
    const HostRig rig(scene);
    const std::int32_t index = rig.Channel(0, "time");
    for (const State state : {State::Setup, State::Bind, State::Edit, State::Evaluated}) {
      const bool isSetup = state == State::Setup || state == State::Bind;
      EXPECT_EQ(rig.Number(0, "time", state, 1), isSetup ? given.setup : given.edited);
      const CZyUser_ChannelRead read = rig.Read(state);
      const int animated = isSetup ? given.setupAnimated : given.editAnimated;
      EXPECT_EQ(read.IsAnimated(rig.Item(0), index), animated);
      CZyUser_Envelope envelope;
      EXPECT_EQ(ZySucceeded(read.ChannelEnvelope(rig.Item(0), index, envelope)), animated == 1);
    }
  }
}

TEST(Layers, KeyframeCursor) {
  SceneData scene = MakeScene();
  ChannelOf(scene, 0, "time").extras.Make().envelope = Keys({{0.5, 1}, {2, 3}, {7.25, 4}});
  ChannelOf(scene, 0, "fps").extras.Make().envelope = EnvelopeData();
  const HostRig rig(scene);
  CZyUser_Envelope envelope;
  CZyUser_Keyframe cursor;
  double time = -1;
  ASSERT_EQ(rig.Read(State::Edit).ChannelEnvelope(rig.Item(0), rig.Channel(0, "time"), envelope), ZYe_OK);
  ASSERT_EQ(envelope.Keyframe(cursor), ZYe_OK);
  EXPECT_TRUE(ZyFailed(cursor.GetTime(time)));
  EXPECT_EQ(cursor.First(), ZYe_OK);
  EXPECT_EQ(cursor.GetTime(time), ZYe_OK);
  EXPECT_EQ(time, 0.5);
  EXPECT_EQ(cursor.Last(), ZYe_OK);
  EXPECT_EQ(cursor.GetTime(time), ZYe_OK);
  EXPECT_EQ(time, 7.25);
  ASSERT_EQ(rig.Read(State::Edit).ChannelEnvelope(rig.Item(0), rig.Channel(0, "fps"), envelope), ZYe_OK);
  ASSERT_EQ(envelope.Keyframe(cursor), ZYe_OK);
  EXPECT_TRUE(ZyFailed(cursor.First()));
  EXPECT_TRUE(ZyFailed(cursor.Last()));
}

TEST(FailingHost, SeesReferencesThatAreKept) {
  Host inner(MakeScene());
  FailingHost host(inner, *inner.Scene());
  CZyUser_ChannelRead read;
  {
    CZyUser_Scene scene;
    scene.Set(host.Scene());
    EXPECT_EQ(scene.SetupChannels(read), ZYe_OK);
  }
  EXPECT_FALSE(host.AllReleased());
  EXPECT_EQ(inner.LiveObjects(), 1u);
  read.Clear();
  EXPECT_TRUE(host.AllReleased());
  EXPECT_EQ(inner.LiveObjects(), 0u);
}

}  // namespace
