// `vornel load-options` from outside: what it shows, stores and writes, and what it refuses.
#include "tests/support/command_fixture.h"

#include <iterator>
#include <sstream>
#include <string_view>

namespace {

using namespace test_support;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class LoadOptionsCommand : public Command {
 protected:
  // With a configuration of its own unless the environment says otherwise; "OUT" at the start of an argument or
  // of a value of the environment stands for the directory.
  CommandRun Run(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment = {"XDG_CONFIG_HOME=OUT/cfg"}) {
    std::vector<std::string> all = {"env"};
    all.insert(all.end(), environment.begin(), environment.end());
    all.insert(all.end(), {VORNEL_COMMAND, "load-options"});
    all.insert(all.end(), arguments.begin(), arguments.end());
    for (std::string& text : all) {
      const std::size_t start = text.find('=') == std::string::npos ? 0 : text.find('=') + 1;
      for (const std::size_t place : {std::size_t{0}, start})
        if (text.compare(place, 3, "OUT") == 0) text.replace(place, 3, Out().string());
    }
    return RunCommand(all);
  }
  // The values as --json tells them, in order: "name=value", with "!" behind what is disabled.
  std::vector<std::string> Shown(std::vector<std::string> arguments = {}) {
    arguments.push_back("--json");
    const CommandRun run = Run(std::move(arguments));
    EXPECT_EQ(run.exitCode, kDone) << run.errors;
    const rapidjson::Document json = Parsed(run.output);
    std::vector<std::string> shown;
    if (!json.IsObject()) return shown;
    for (const auto& member : json.GetObject()) {
      const rapidjson::Value& value = member.value["value"];
      const std::string text = value.IsBool()  ? (value.GetBool() ? "true" : "false")
                               : value.IsInt() ? std::to_string(value.GetInt())
                                               : std::to_string(value.GetDouble());
      shown.push_back(member.name.GetString() + ("=" + text) + (member.value["enabled"].GetBool() ? "" : "!"));
    }
    return shown;
  }

  fs::path Config() const { return Out() / "cfg" / "vornel" / "config.json"; }
  std::vector<std::string> ConfigFiles() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(Config().parent_path()))
      files.push_back(entry.path().filename().string());
    std::sort(files.begin(), files.end());
    return files;
  }
  void WriteConfig(const std::string& text) const {
    fs::create_directories(Config().parent_path());
    std::ofstream(Config(), std::ios::binary) << text;
  }
};

std::vector<std::string> Words(const char* text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

const std::vector<std::string> kFirstRun = Words(
    "mergeWithExistingItems=false loadGeometry=true loadNormals=true loadMeshSmoothing=true "
    "loadBlendShapes=true loadPolygonParts=true loadSelectionSets=true loadMaterials=true "
    "invertMatTranAmt=false useMatTranColAsTranAmt=false changeTextureEffect=false loadCameras=true "
    "loadLights=true loadAnimation=true loadSampleAnimation=true loadSampleAnimationRate=0 "
    "globalScalingFactor=1.000000 importUnits=0");

TEST_F(LoadOptionsCommand, AFirstRunShowsTheDefaultsAndStoresNothing) {
  EXPECT_EQ(Shown(), kFirstRun);
  const CommandRun run = Run({});
  EXPECT_EQ(run.exitCode, kDone);
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_THAT(run.output, AllOf(StartsWith("mergeWithExistingItems   off\nloadGeometry             on\n"),
                                HasSubstr("loadSampleAnimationRate  0 \"1x FPS\"\n"),
                                HasSubstr("globalScalingFactor      1\n"), HasSubstr("   9 \"Miles\"\n")));
  EXPECT_FALSE(fs::exists(Out() / "cfg"));
}

TEST_F(LoadOptionsCommand, WhatIsSetIsStoredAndShown) {
  std::vector<std::string> expected = Words(
      "mergeWithExistingItems=true loadGeometry=false loadNormals=false loadMeshSmoothing=false "
      "loadBlendShapes=false loadPolygonParts=false loadSelectionSets=false loadMaterials=false "
      "invertMatTranAmt=true useMatTranColAsTranAmt=true changeTextureEffect=true loadCameras=false "
      "loadLights=false loadAnimation=false loadSampleAnimation=false loadSampleAnimationRate=1 "
      "globalScalingFactor=0.025000 importUnits=8");
  std::vector<std::string> arguments;
  for (const std::string& setting : expected) arguments.insert(arguments.end(), {"--set", setting});
  for (const int disabled : {10, 14, 15}) expected[static_cast<std::size_t>(disabled)] += "!";
  const CommandRun set = Run(arguments);
  EXPECT_EQ(set.exitCode, kDone);
  EXPECT_EQ(set.ErrorLines().size(), 3u) << "the disabled ones are stored with a warning";
  EXPECT_EQ(Shown(), expected);
  EXPECT_THAT(ReadWholeFile(Config()),
              AllOf(StartsWith(R"({
  "gltfLoader": {
    "gltfLoadOptions": {
      "LoadOptions": {
        "mergeWithExistingItems": 1,
        "loadGeometry": 0,
        "loadMaterials": 0,
        "loadCameras": 0,)"),
                    HasSubstr("\"globalScalingFactor\": 0.025,\n        \"importUnits\": 8\n")));
}

TEST_F(LoadOptionsCommand, ChoicesHaveNumbersAndTexts) {
  for (const auto& [text, value] :
       {std::pair("3", "3"), {"Miles", "9"}, {"Use FBX file units", "0"}, {"Meters [m]", "4"}})
    EXPECT_EQ(Shown({"--set", std::string("importUnits=") + text}).back(), std::string("importUnits=") + value);
  EXPECT_EQ(Shown({"--set", "loadSampleAnimationRate=2x FPS"})[15], "loadSampleAnimationRate=1");
  EXPECT_EQ(Shown({"--set", "importUnits=2", "--set", "importUnits=5"}).back(), "importUnits=5")
      << "the last counts";
  EXPECT_THAT(Run({}).output, HasSubstr("importUnits              5 \"Kilometers [km]\"\n"));
  EXPECT_THAT(Run({"--json"}).output, HasSubstr("\"choice\": \"Kilometers [km]\""));
}

TEST_F(LoadOptionsCommand, RefusesByName) {
  Run({"--set", "importUnits=7"});
  const std::string before = ReadWholeFile(Config());
  for (const char* setting :
       {"importUnits=10", "importUnits=-1", "importUnits=", "importUnits=1.0", "importUnits=miles",
        "loadSampleAnimationRate=2", "loadLights=2", "loadLights=ON", "globalScalingFactor=nan",
        "globalScalingFactor=inf", "globalScalingFactor=1e999", "globalScalingFactor=1,5",
        "globalScalingFactor=1 ", "loadlights=1", "loadLights", "=1"}) {
    const CommandRun run = Run({"--set", "loadCameras=off", "--set", setting, "--write", "OUT/record"});
    EXPECT_EQ(run.exitCode, kUsage) << setting;
    const std::string name = std::string(setting).substr(0, std::string_view(setting).find('='));
    EXPECT_THAT(run.ErrorLines(), ElementsAre(AllOf(StartsWith("vornel: error: --set: "), HasSubstr(name))));
    EXPECT_THAT(run.output, IsEmpty());
  }
  EXPECT_EQ(Run({"--store"}).exitCode, kUsage);
  EXPECT_EQ(ReadWholeFile(Config()), before);
  EXPECT_FALSE(fs::exists(Out() / "record"));
}

TEST_F(LoadOptionsCommand, ADamagedConfigurationIsKeptAside) {
  const std::string deep(100000, '[');
  const std::string damages[] = {
      "", "{", "[1]", "{} {}", "{\"a\": \"\xFF\"}", std::string("{}\0", 3), "{\"a\": 1e999}", "{\"a\": " + deep};
  std::string name = "config.json.damaged";
  for (const std::string& damage : damages) {
    SCOPED_TRACE(damage.substr(0, 20));
    WriteConfig(damage);
    const CommandRun run = Run({"--set", "importUnits=6"});
    EXPECT_EQ(run.exitCode, kDone);
    EXPECT_THAT(
        run.ErrorLines(),
        ElementsAre(AllOf(StartsWith("vornel: warning: " + Config().string() + ": damaged: "), HasSubstr(name))));
    EXPECT_EQ(ReadWholeFile(Config().parent_path() / name), damage);
    EXPECT_EQ(Shown().back(), "importUnits=6");
    name = "config.json.damaged-" + std::to_string(ConfigFiles().size());
  }
  EXPECT_EQ(ConfigFiles().size(), 1 + std::size(damages));
}

TEST_F(LoadOptionsCommand, AWrongTypeCostsOneValueAndNothingElseIsLost) {
  WriteConfig(R"({"theirs": {"a": [1, null, 2.5], "b": [7, 0e-254, 0e38, -0.00000000000000000000000]},
      "gltfLoader": {"other": 1, "gltfLoadOptions": {"LoadOptions":
      {"importUnits": "cm", "loadLights": false, "globalScalingFactor": 7, "loadCameras": 1.5, "mine": "x"}}}})");
  std::vector<std::string> expected = kFirstRun;
  expected[12] = "loadLights=false";
  expected[16] = "globalScalingFactor=7.000000";
  EXPECT_EQ(Shown(), expected);
  const CommandRun run = Run({"--set", "loadNormals=off"});
  const std::string place = Config().string() + ": gltfLoader.gltfLoadOptions.LoadOptions.";
  EXPECT_THAT(run.ErrorLines(), ElementsAre(HasSubstr(place + "loadCameras is not a boolean; it is skipped"),
                                            HasSubstr(place + "importUnits is not an integer")));
  expected[2] = "loadNormals=false";
  EXPECT_EQ(Shown(), expected);
  EXPECT_THAT(Run({}).errors, IsEmpty()) << "it was replaced";
  const std::string text = ReadWholeFile(Config());
  for (const char* part : {"\"theirs\": {", "null,", "2.5", "7,\n      0.0,\n      0.0,\n      -0.0\n",
                           "\"other\": 1,", "\"mine\": \"x\",\n        \"mergeWithExistingItems\": 0,"})
    EXPECT_THAT(text, HasSubstr(part));

  for (const char* tree :
       {R"({"gltfLoader": 5})", R"({"gltfLoader": {"gltfLoadOptions": {"LoadOptions": []}}})"}) {
    WriteConfig(tree);
    EXPECT_THAT(Run({}).errors, HasSubstr(" is not an object; it is skipped\n")) << tree;
    EXPECT_EQ(Shown(), kFirstRun);
  }
}

TEST_F(LoadOptionsCommand, TheConfigurationIsWrittenInPlace) {
  WriteConfig("{}");
  fs::permissions(Config(), fs::perms(0640));
  fs::rename(Config(), Out() / "real.json");
  fs::create_symlink(Out() / "real.json", Config());
  EXPECT_EQ(Run({"--set", "importUnits=2"}).exitCode, kDone);
  EXPECT_TRUE(fs::is_symlink(Config()));
  EXPECT_EQ(fs::status(Out() / "real.json").permissions(), fs::perms(0640));
  EXPECT_THAT(ConfigFiles(), ElementsAre("config.json"));

  fs::remove(Config());
  fs::create_directory(Config());
  EXPECT_EQ(Run({}).exitCode, kInput);
}

TEST_F(LoadOptionsCommand, TheEnvironmentSaysWhereTheConfigurationIs) {
  std::ofstream(Out() / "file") << "x";
  struct Row {
    const char* config;  // XDG_CONFIG_HOME
    const char* home;
    const char* file;  // null when there is no place
  };
  for (const Row& row :
       {Row{"OUT/a", "OUT/b", "a"}, Row{"", "OUT/c", "c/.config"}, Row{"cfg", "OUT/d", "d/.config"},
        Row{"cfg", "", nullptr}, Row{"OUT/file", "OUT/e", nullptr}}) {
    SCOPED_TRACE(row.config);
    const std::vector<std::string> environment = {std::string("HOME=") + row.home,
                                                  std::string("XDG_CONFIG_HOME=") + row.config};
    EXPECT_EQ(Run({}, environment).exitCode, kDone) << "nothing is to be written";
    const CommandRun run = Run({"--set", "importUnits=2"}, environment);
    EXPECT_EQ(run.exitCode, row.file ? kDone : kOutput);
    if (row.file)
      EXPECT_TRUE(fs::exists(Out() / row.file / "vornel" / "config.json"));
    else
      EXPECT_THAT(run.ErrorLines(), ElementsAre(StartsWith("vornel: error: ")));
  }
}

TEST_F(LoadOptionsCommand, RecordsAreWrittenAndRead) {
  const CommandRun written = Run({"--set", "importUnits=8", "--set", "loadLights=off", "--write", "OUT/record"});
  EXPECT_EQ(written.exitCode, kDone);
  const std::string record("\1\0\0\0\xF7\x19\x20\0\0\0\0\0\0\0\xF0\x3F", 16);
  EXPECT_EQ(ReadWholeFile(Out() / "record"), record);
  const std::vector<std::string> stored = Shown();
  EXPECT_EQ(stored.back(), "importUnits=8");

  std::vector<std::string> read = stored;
  read.back() = "importUnits=0";  // the record doesn't hold it
  EXPECT_EQ(Shown({"--read", "OUT/record"}), read);
  EXPECT_EQ(Shown(), stored) << "reading stores nothing";
  EXPECT_EQ(Shown({"--read", "OUT/record", "--write", "OUT/again"}), read);
  EXPECT_EQ(ReadWholeFile(Out() / "again"), record.substr(0, 6) + '\0' + record.substr(7));
  EXPECT_EQ(Shown({"--read", "OUT/record", "--store"}), read);
  EXPECT_EQ(Shown(), read);
  read[11] = "loadCameras=false";
  EXPECT_EQ(Shown({"--read", "OUT/record", "--set", "loadCameras=false"}), read);
  EXPECT_EQ(Shown(), read);

  EXPECT_EQ(Run({"--write", "OUT/none/record"}).exitCode, kOutput);
  EXPECT_EQ(Run({"--write", "OUT"}).exitCode, kOutput);
  EXPECT_EQ(Run({"--write", "/dev/null"}).exitCode, kOutput);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(LoadOptionsCommand, ABadRecordIsRefused) {
  const std::string version1("\1\0\0\0", 4), flags(4, '\0'), nan("\0\0\0\0\0\0\xF8\x7F", 8);
  const std::string scale("\0\0\0\0\0\0\xF0\x3F", 8), units("\0\0\xFF\xFF", 4);
  const std::pair<std::string, const char*> bad[] = {
      {"", "ends after 0 bytes"},
      {version1, "ends after 4 bytes"},
      {version1 + flags + "1234567", "ends after 15 bytes"},
      {std::string("\2\0\0\0", 4) + flags + scale, "no record"},
      {version1 + flags + nan, "globalScalingFactor can't be 'nan'"},
      {version1 + units + scale, "importUnits can't be '1111'"},
      {std::string(65537, '\0'), "longer"},
  };
  for (const auto& [bytes, reason] : bad) {
    std::ofstream(Out() / "record", std::ios::binary) << bytes;
    const CommandRun run = Run({"--read", "OUT/record", "--store", "--write", "OUT/copy"});
    EXPECT_EQ(run.exitCode, kInput) << reason;
    EXPECT_THAT(run.ErrorLines(),
                ElementsAre(AllOf(HasSubstr((Out() / "record").string() + ": "), HasSubstr(reason))));
    EXPECT_FALSE(fs::exists(Out() / "cfg") || fs::exists(Out() / "copy"));
  }
  EXPECT_EQ(Run({"--read", "OUT/missing"}).exitCode, kInput);

  std::ofstream(Out() / "record", std::ios::binary) << std::string(4, '\0') + units + nan;
  const CommandRun run = Run({"--read", "OUT/record"});
  EXPECT_EQ(run.exitCode, kDone) << "version 0 has no scale";
  EXPECT_THAT(run.errors, HasSubstr("8 bytes behind the record are skipped"));
  EXPECT_THAT(run.output, AllOf(HasSubstr("globalScalingFactor      1\n"),
                                HasSubstr("changeTextureEffect      off  [disabled]\n")));
}

}  // namespace
