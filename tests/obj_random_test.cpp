// Reads numbers and files of random spellings.
#include "readers/text_numbers.h"
#include "tests/support/obj_rig.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace test_support;

// The short road of ReadFloat against the library that rounds correctly, with texts halfway between two floats.
TEST(ObjRandom, RoundsNumbersCorrectly) {
  std::istringstream known(
      "0 -0 +1 1. .5 -.5 1e5 1E+5 1e-45 1e-46 007 16777217 16777219 8388609.5 8388608.5 3.4028235e38 "
      "0.100000001490116119384765625 1.00000005960464477539 999999999999999 9999999999999999");
  std::vector<std::string> texts{std::istream_iterator<std::string>(known), {}};
  std::mt19937_64 random(7);
  for (int i = 0; i < 200000; ++i) {
    std::string text = std::to_string(random() >> (random() % 62));
    if (random() % 4 != 0) text.insert(random() % (text.size() + 1), ".");
    if (random() % 8 == 0) text += "e" + std::to_string(static_cast<int>(random() % 40) - 20);
    texts.push_back((random() % 2 == 0 ? "-" : "") + text);
  }
  // As near to the middle between two floats as 15 digits come: as doubles many lie on it.
  for (int i = 0; i < 20000; ++i) {
    const float value = std::ldexp(1.0f + static_cast<float>(random() % (1u << 23)) / (1u << 23), i % 16);
    const double middle = (double{value} + double{std::nextafter(value, 1e9f)}) / 2;
    char text[40];
    const int wholeDigits = std::snprintf(text, sizeof text, "%d", static_cast<int>(middle));
    std::snprintf(text, sizeof text, "%.*f", 15 - wholeDigits, middle);
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    const std::string line = text + "\n";
    const std::string unsignedText = text.substr(text[0] == '+');
    float expected = 0;
    fast_float::from_chars(unsignedText.data(), unsignedText.data() + unsignedText.size(), expected);
    float value = -1;
    const char* end = readers::ReadFloat(line.data(), line.data() + line.size(), value);
    ASSERT_EQ(end, line.data() + text.size()) << text;
    ASSERT_EQ(std::bit_cast<std::uint32_t>(value), std::bit_cast<std::uint32_t>(expected)) << text;
  }
}

// Writes an OBJ file of random polygons in random spellings and remembers what it means.
class RandomFile {
 public:
  explicit RandomFile(unsigned seed) : random_(seed) {
    lineEnd_ = Pick(2) ? "\r\n" : "\n";
    for (int statement = 0; statement < 200; ++statement) WriteStatement();
  }

  const std::string& Text() const { return text_; }
  const std::map<std::string, std::vector<Polygon>>& Polygons() const { return polygons_; }

 private:
  int Pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
  std::string Blank() {
    const std::string blanks[] = {" ", " ", " ", "\t", "  ", " \\" + lineEnd_};
    return blanks[Pick(6)];
  }
  void EndLine() {
    if (Pick(10) == 0) text_ += " # 1 2 3";
    if (Pick(10) == 0) text_ += " ";
    text_ += lineEnd_;
    if (Pick(20) == 0) text_ += lineEnd_ + "# a comment" + lineEnd_;
  }

  float WriteNumber() {
    const float values[] = {
        0,
        1,
        -1,
        0.5f,
        static_cast<float>(Pick(2000001) - 1000000) / 1000,
        std::bit_cast<float>(0x30000000u + static_cast<std::uint32_t>(random_() % 0x20000000u))};
    const float value = values[Pick(6)];
    const char* formats[] = {"%.9g", "%.8e", "%.9G", "%+.9g", "%.60f"};
    char spelled[200];
    std::snprintf(spelled, sizeof spelled, formats[Pick(5)], static_cast<double>(value));
    text_ += Blank() + spelled;
    return value;
  }

  void WriteEntry(const char* word, std::size_t dimension, std::vector<std::vector<float>>& stream) {
    text_ += word;
    std::vector<float>& value = stream.emplace_back();
    while (value.size() < dimension) value.push_back(WriteNumber());
    EndLine();
  }

  std::string WriteName(const char* word) {
    const std::string names[] = {"a", "b", "name with blanks", "\xC3\xBC/2", "1"};
    const std::string name = names[Pick(5)];
    text_ += word + Blank() + name + lineEnd_;
    return name;
  }

  // Writes an index of the stream, counted from its start or its end, and gives the value.
  std::vector<float> WriteIndex(const std::vector<std::vector<float>>& stream) {
    const int place = Pick(static_cast<int>(stream.size()));
    text_ += std::to_string(Pick(2) ? place + 1 : place - static_cast<int>(stream.size()));
    return stream[static_cast<std::size_t>(place)];
  }

  void WriteFace() {
    Polygon polygon{material_, object_.empty() ? "" : group_, {}};
    text_ += "f";
    for (int corners = 3 + Pick(4); corners > 0; --corners) {
      text_ += Blank();
      Corner& corner = polygon.corners.emplace_back();
      corner.position = WriteIndex(points_);
      const int shape = Pick(4);
      if (shape > 0) text_ += "/";
      if (shape == 1 || shape == 3) corner.uv = WriteIndex(uvs_);
      if (shape > 1) text_ += "/";
      if (shape > 1) corner.normal = WriteIndex(normals_);
    }
    EndLine();
    polygons_[!object_.empty() ? object_ : !group_.empty() ? group_ : "model"].push_back(polygon);
  }

  void WriteStatement() {
    const bool hasEntries = !points_.empty() && !uvs_.empty() && !normals_.empty();
    const int kind = Pick(hasEntries ? 12 : 3);
    if (kind == 0) return WriteEntry("v", 3, points_);
    if (kind == 1) return WriteEntry("vt", 2, uvs_);
    if (kind == 2) return WriteEntry("vn", 3, normals_);
    if (kind == 3) material_ = WriteName("usemtl");
    if (kind == 4) group_ = WriteName("g");
    // Objects come late, so that groups on their own come up as well, and never share a group's name.
    if (kind == 5 && Pick(4) == 0) object_ = "object " + std::to_string(Pick(3));
    if (kind == 5 && !object_.empty()) text_ += "o " + object_ + lineEnd_;
    if (kind > 5) WriteFace();
  }

  std::mt19937 random_;
  std::string lineEnd_;
  std::string text_;
  std::vector<std::vector<float>> points_, uvs_, normals_;
  std::string material_ = "Default", object_, group_;
  std::map<std::string, std::vector<Polygon>> polygons_;
};

TEST(ObjRandom, ReadsBackWhatRandomFilesMean) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    const RandomFile file(seed);
    const Result result = ReadText(file.Text());
    ASSERT_EQ(result.error, "") << file.Text();
    std::map<std::string, std::vector<Polygon>> found;
    for (const auto* item : Meshes(result.scene)) {
      ASSERT_TRUE(found.emplace(item->name, Unfold(*item->mesh)).second) << item->name;
    }
    ASSERT_TRUE(found == file.Polygons()) << "seed " << seed << "\n" << file.Text();
    // A file cut off within a line is read or refused, nothing else.
    for (unsigned cut = 1; cut < 60 && seed < 10; ++cut) ReadText(file.Text().substr(0, file.Text().size() - cut));
  }
}

}  // namespace
