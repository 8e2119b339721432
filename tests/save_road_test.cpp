// The road of a save: servers, passes, results and messages.
#include "host/counted_object.h"
#include "host/user_services.h"
#include "saver/module.h"
#include "tests/support/glb_reader.h"
#include "tests/support/scan_rig.h"
#include "tests/support/temp_directory.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using headless::ItemIndex;
using headless::LogLine;
using namespace test_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFatal = "Fatal internal error in FBX saver";

// A scene that logs `errors` errors and saves well.
SceneBuilder SceneWithErrors(int errors) {
  SceneBuilder scene;
  scene.AddTriangle("Triangle");
  const ItemIndex group = scene.Add("deformGroup", "Group");
  for (int i = 0; i < errors; ++i) {
    const ItemIndex deformer = scene.AddDeformer("d", scene.Add("mask", "Mask"));
    scene.Item(group).deformGroup->deformers.push_back(deformer);
  }
  return scene;
}

class TestMonitor : public CountedObject<IZyMonitor> {
 public:
  zyresult Initialize(std::uint32_t count) override {
    initialized.push_back(count);
    return ZYe_OK;
  }
  zyresult Step(std::uint32_t count) override {
    steps += count;
    if (throws) throw 7;
    return refuses ? ZYe_FAILED : ZYe_OK;
  }

  std::vector<std::uint32_t> initialized;
  std::uint32_t steps = 0;
  bool refuses = false, throws = false;
};

TEST(SaveRoad, TheModuleServesItsOptionsAndTwoSavers) {
  headless::Host host(headless::MakeScene());
  const LoadedModule module(host);
  const char* name = nullptr;
  std::vector<std::string> names;
  for (std::uint32_t index = 0; ZySucceeded(module->ServerName(index, name)); ++index) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("loaderOptions.gltf", "gltf.bin", "gltf.gltf"));
  EXPECT_EQ(module->ServerCount(), 3u);
  names.erase(names.begin());
  for (const char* wrong : {"", "gltf", "gltf.bi", "gltf.bin2", "GLTF.BIN", "gltf.glt"})
    EXPECT_EQ(module->Factory(wrong), nullptr) << wrong;

  const std::string tags[][4] = {{"scene2", "glb", "glTF v2 .glb", "io-status"},
                                 {"scene2", "gltf", "glTF v2 .gltf", "io-status"}};
  const std::string keys[] = {"saver.outClass", "saver.dosType", "server.username", "server.logsubsystem"};
  for (std::size_t server = 0; server < 2; ++server) {
    IZyFactory* factory = module->Factory(names[server].c_str());
    ASSERT_NE(factory, nullptr);
    std::uint32_t id = 0;
    ASSERT_EQ(factory->InterfaceCount(), 2u);
    EXPECT_EQ(factory->InterfaceByIndex(0, id), ZYe_OK);
    EXPECT_EQ(id, IZySaver::kId);
    EXPECT_EQ(factory->InterfaceByIndex(1, id), ZYe_OK);
    EXPECT_EQ(id, IZyStaticDesc::kId);
    CountedRef<IZyStaticDesc> description;
    ASSERT_TRUE(description.Set(module.NewSaver(names[server].c_str()).Raw()));
    ASSERT_EQ(description.Raw()->Count(), 4u);
    ZyTagRow row = {};
    for (std::uint32_t index = 0; index < 4; ++index) {
      EXPECT_EQ(description.Raw()->ByIndex(index, row), ZYe_OK);
      EXPECT_EQ(row.key, keys[index]);
      EXPECT_EQ(row.value, tags[server][index]);
      EXPECT_EQ(row.reserved, nullptr);
    }
    EXPECT_EQ(description.Raw()->ByIndex(4, row), ZYe_OUT_OF_BOUNDS);
    EXPECT_EQ(row.key, keys[3]) << "a failed call leaves its output alone";
  }
  EXPECT_EQ(CreateModule(nullptr, nullptr), ZYe_FAILED);
}

TEST(SaveRoad, TheMonitorSeesOneScanAndAllSteps) {
  TestMonitor monitor;
  const SaveRun run = RunSave(SceneWithErrors(1).data, "scene.glb", &monitor);
  EXPECT_EQ(run.result, ZYe_OK);
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::Setup), ElementsAre("glTf v2 :: InitSaver()"));
  EXPECT_THAT(monitor.initialized, ElementsAre(0u));
  EXPECT_EQ(monitor.steps, 4u);  // three points and a polygon
  // The error of the counting pass is logged; the second pass counts anew.
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::Error), ElementsAre("Failed to obtain locator for item:Mask"));
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::WarningDialog), IsEmpty());
}

TEST(SaveRoad, ARefusalIsTheResultOfAFinishedSave) {
  TestMonitor monitor;
  monitor.refuses = true;
  const SaveRun run = RunSave(SceneWithErrors(0).data, "scene.glb", &monitor);
  EXPECT_EQ(run.result, ZYe_ABORTED);
  EXPECT_EQ(monitor.steps, 4u);
  EXPECT_EQ(run.log.back().text, "...DONE");
  EXPECT_EQ(ReadWholeFile(run.output), ReadWholeFile(RunSave(SceneWithErrors(0).data).output));
}

TEST(SaveRoad, AFailureKeptByTheFrameIsTheResult) {
  SceneBuilder scene = SceneWithErrors(0);
  scene.Channel(scene.AddTriangle("Broken"), "mesh").extras.Make().readable = false;
  const SaveRun run = RunSave(scene.data);
  EXPECT_TRUE(ZyFailed(run.result));
  EXPECT_TRUE(std::filesystem::exists(run.output));
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::Info), Contains("...DONE"));
}

TEST(SaveRoad, TheSummaryComesLastAndCounts) {
  struct Row {
    const char* file;
    int errors;
    zyresult result;
    std::vector<std::string> dialogs;
  };
  const std::string failed = "Failed to export GLTF!";
  const std::string summary = "There are 0 warnings and 3 errors reported to event log";
  const Row rows[] = {{"scene.glb", 0, ZYe_OK, {}},
                      {"scene.gltf", 3, ZYe_OK, {summary}},
                      {"missing/scene.glb", 0, ZYe_FAILED, {failed}},
                      {"missing/scene.gltf", 3, ZYe_FAILED, {failed, summary}}};
  for (const Row& row : rows) {
    const SaveRun run = RunSave(SceneWithErrors(row.errors).data, row.file);
    EXPECT_EQ(run.result, row.result) << row.file;
    std::vector<std::string> dialogs;
    for (const LogLine& line : run.log)
      if (line.kind == LogLine::Kind::ErrorDialog || line.kind == LogLine::Kind::WarningDialog)
        dialogs.push_back(line.text);
    EXPECT_EQ(dialogs, row.dialogs) << row.file;
    EXPECT_EQ(std::filesystem::exists(run.output), row.result == ZYe_OK) << row.file;
    EXPECT_EQ(run.leakedObjects, 0u) << row.file;
  }
}

// A host that throws instead of giving one of its services.
class ThrowingHost final : public IZyHost {
 public:
  ThrowingHost(headless::Host& host, std::uint32_t service) : host_(host), service_(service) {}
  IZyObject* Service(std::uint32_t id) override {
    if (throws && id == service_) throw std::runtime_error("no service");
    return host_.Service(id);
  }
  bool throws = true;

 private:
  headless::Host& host_;
  std::uint32_t service_;
};

TEST(SaveRoad, NoExceptionLeavesASave) {
  struct Row {
    const char* what;
    std::uint32_t service;
    bool monitor;
    std::size_t fatalLines;
  };
  // The summary fails with the dialogs, and so does the message that tells of it.
  const Row rows[] = {{"InitSaver, writing pass", IZyValueService::kId, false, 1},
                      {"InitSaver, counting pass", IZyValueService::kId, true, 1},
                      {"summary", IZyStdDialogService::kId, false, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const TempDirectory directory;
    headless::Host host(SceneWithErrors(2).data);
    std::vector<LogLine> log;
    host.SetLogSink([&](const LogLine& line) { log.push_back(line); });
    ThrowingHost throwing(host, row.service);
    {
      const LoadedModule module(throwing);
      const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
      const std::string path = HostPath(directory.Path() / "scene.glb");
      TestMonitor monitor;
      EXPECT_EQ(saver.Raw()->Save(host.Scene(), path.c_str(), row.monitor ? &monitor : nullptr), ZYe_FAILED);
      EXPECT_EQ(TextsOf(log, LogLine::Kind::ErrorDialog), std::vector<std::string>(row.fatalLines, kFatal));
      EXPECT_THAT(monitor.initialized, IsEmpty());
      throwing.throws = false;
      EXPECT_EQ(saver.Raw()->Save(host.Scene(), path.c_str(), nullptr), ZYe_OK);
    }
    EXPECT_EQ(host.LiveObjects(), 0u);
  }
}

TEST(SaveRoad, AnExceptionOfTheMonitorEndsTheSave) {
  TestMonitor monitor;
  monitor.throws = true;
  const SaveRun run = RunSave(SceneWithErrors(0).data, "scene.glb", &monitor);
  EXPECT_EQ(run.result, ZYe_FAILED);
  EXPECT_THAT(TextsOf(run.log, LogLine::Kind::ErrorDialog), ElementsAre(kFatal));
  EXPECT_FALSE(std::filesystem::exists(run.output));
  EXPECT_EQ(run.leakedObjects, 0u);
}

TEST(SaveRoad, ASaverCarriesNothingOver) {
  const TempDirectory directory;
  SceneBuilder scene = SceneWithErrors(1);
  scene.Add("ikFullBody", "Solver", scene.Add("locator", "Arm"));
  scene.Add("camera", "Camera");
  headless::Host host(scene.data);
  const LoadedModule module(host);
  const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
  const auto save = [&](const CountedRef<IZySaver>& with, const char* name) {
    const std::filesystem::path path = directory.Path() / name;
    EXPECT_EQ(with.Raw()->Save(host.Scene(), HostPath(path).c_str(), nullptr), ZYe_OK);
    return ReadWholeFile(path);
  };
  const std::string first = save(saver, "first.glb");
  const std::string text = save(module.NewSaver("gltf.gltf"), "text.gltf");
  EXPECT_EQ(save(saver, "second.glb"), first);
  EXPECT_EQ(first.substr(0, 4), "glTF");
  EXPECT_EQ(text.substr(0, 1), "{");
  EXPECT_TRUE(std::filesystem::exists(directory.Path() / "text.bin"));
}

TEST(SaveRoad, WrongTargetsAreRefused) {
  headless::Host host(headless::MakeScene());
  const LoadedModule module(host);
  const CountedRef<IZySaver> saver = module.NewSaver("gltf.bin");
  IZyObject* noScene = host.Service(IZySceneService::kId);
  CZyUser_Message message;
  ASSERT_EQ(CZyMessageService().NewMessage(message), ZYe_OK);
  EXPECT_EQ(saver.Raw()->Verify(host.Scene(), message.Raw()), ZYe_OK);
  EXPECT_EQ(saver.Raw()->Verify(noScene, message.Raw()), ZYe_NO_FRAME);
  EXPECT_EQ(saver.Raw()->Verify(nullptr, message.Raw()), ZYe_NO_FRAME);
  EXPECT_EQ(saver.Raw()->Verify(host.Scene(), nullptr), ZYe_NO_TARGET);
  EXPECT_EQ(saver.Raw()->Save(noScene, "never.glb", nullptr), ZYe_NO_FRAME);
  EXPECT_EQ(saver.Raw()->Save(host.Scene(), nullptr, nullptr), ZYe_FAILED);
}

}  // namespace
