// The load options as the dialog sees them: arguments, choices, what is enabled.
#include "tests/support/load_options_rig.h"

#include <gmock/gmock.h>

namespace {

using test_support::kExpected;
using test_support::Rig;
using test_support::Server;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LoadOptions, TheServerTellsItsArguments) {
  Rig rig;
  IZyFactory* factory = (*rig.module)->Factory("loaderOptions.gltf");
  ASSERT_NE(factory, nullptr);
  std::vector<std::uint32_t> ids(factory->InterfaceCount());
  for (std::uint32_t index = 0; index < ids.size(); ++index) factory->InterfaceByIndex(index, ids[index]);
  EXPECT_THAT(ids, ElementsAre(IZyCommandServer::kId, IZyServerAttributes::kId, IZyAttributesUI::kId));

  const Server server = rig.NewServer();
  EXPECT_EQ(server.command.Raw()->Flags(), 0x1000000u);
  ASSERT_EQ(server.attributes.Raw()->Count(), 18u);
  for (std::uint32_t index = 0; index < 18; ++index) {
    const char *name = nullptr, *type = nullptr;
    EXPECT_EQ(server.attributes.Raw()->Name(index, name), ZYe_OK);
    EXPECT_EQ(server.attributes.Raw()->TypeName(index, type), ZYe_OK);
    EXPECT_STREQ(name, kExpected[index].name);
    EXPECT_STREQ(type, kExpected[index].type);
  }
  const char* none = nullptr;
  EXPECT_EQ(server.attributes.Raw()->Name(18, none), ZYe_OUT_OF_BOUNDS);
  EXPECT_EQ(server.command.Raw()->ArgumentEnable(18), ZYe_OUT_OF_BOUNDS);
}

struct HintSpy final : CountedObject<IZyUIHints> {
  zyresult SetMinimum(std::int32_t value) override { return Say("min " + std::to_string(value)); }
  zyresult SetMaximum(std::int32_t value) override { return Say("max " + std::to_string(value)); }
  zyresult SetClass(const char* name) override { return Say(std::string("class ") + name); }
  zyresult AddText(const char* text) override { return texts.emplace_back(text), ZYe_OK; }
  zyresult Say(const std::string& text) { return said.push_back(text), ZYe_OK; }

  std::vector<std::string> said, texts;
};

TEST(LoadOptions, TwoArgumentsHaveChoices) {
  Rig rig;
  const Server server = rig.NewServer();
  const std::vector<std::string> rates = {"1x FPS", "2x FPS"};
  const std::vector<std::string> units = {"Use FBX file units",
                                          "Millimeters [mm]",
                                          "Decimeters [dm]",
                                          "Centimeters [cm]",
                                          "Meters [m]",
                                          "Kilometers [km]",
                                          "Inches",
                                          "Feet",
                                          "Yards",
                                          "Miles"};
  for (std::uint32_t index = 0; index < 18; ++index) {
    SCOPED_TRACE(kExpected[index].name);
    HintSpy spy;
    EXPECT_EQ(server.ui.Raw()->UIHints(index, &spy), ZYe_OK);
    const ZyTextHint* hints = nullptr;
    const zyresult result = server.attributes.Raw()->TextHints(index, hints);
    if (index != 15 && index != 17) {
      EXPECT_THAT(spy.said, IsEmpty());
      EXPECT_EQ(result, ZYe_FAILED);
      continue;
    }
    const std::vector<std::string>& texts = index == 15 ? rates : units;
    EXPECT_THAT(spy.said, testing::UnorderedElementsAre("min 0", "class iPopChoice",
                                                        "max " + std::to_string(texts.size() - 1)));
    EXPECT_EQ(spy.texts, texts);
    ASSERT_EQ(result, ZYe_OK);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      EXPECT_EQ(hints[i].value, static_cast<std::int32_t>(i));
      EXPECT_EQ(hints[i].text, texts[i]);
    }
    EXPECT_EQ(hints[texts.size()].value, -1);
  }
}

TEST(LoadOptions, ArgumentsAreEnabledByOthers) {
  Rig rig;
  const Server server = rig.NewServer();
  for (int bits = 0; bits < 8; ++bits) {
    LoadOptions options;
    options.loadAnimation = bits & 1;
    options.loadSampleAnimation = bits & 2;
    options.loadMaterials = bits & 4;
    server.Set(options);
    std::vector<std::uint32_t> disabled;
    for (std::uint32_t index = 0; index < 18; ++index) {
      const zyresult result = server.command.Raw()->ArgumentEnable(index);
      if (result != ZYe_OK) disabled.push_back(index);
      EXPECT_TRUE(result == ZYe_OK || result == ZyCode(0x84800004u));
    }
    std::vector<std::uint32_t> expected;
    if (!(bits & 4)) expected.push_back(10);
    if (!(bits & 1)) expected.push_back(14);
    if ((bits & 3) != 3) expected.push_back(15);
    EXPECT_EQ(disabled, expected) << bits;
  }
}

}  // namespace
