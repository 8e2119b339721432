#include "tests/support/glb_reader.h"

#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test_support {
namespace {

void Check(bool good, const std::filesystem::path& path, const std::string& fault) {
  if (!good) throw std::runtime_error(path.string() + ": " + fault);
}

template <class Value>
Value ValueAt(const std::uint8_t* bytes) {
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

std::uint32_t U32At(const std::string& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << 8 * i;
  return value;
}

std::string Expected(const char* what, std::uint64_t expected, std::uint64_t found) {
  return std::string(what) + " is " + std::to_string(found) + ", not " + std::to_string(expected);
}

std::vector<std::uint8_t> BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

void ParseText(GltfFile& file, const std::filesystem::path& path) {
  file.json.Parse<rapidjson::kParseFullPrecisionFlag>(file.text.data(), file.text.size());
  Check(!file.json.HasParseError(), path,
        std::string("bad JSON: ") + rapidjson::GetParseError_En(file.json.GetParseError()) + " at byte " +
            std::to_string(file.json.GetErrorOffset()));
}

const rapidjson::Value& Buffer(const GltfFile& file, const std::filesystem::path& path) {
  Check(file.json["buffers"].Size() == 1, path, "there isn't just one buffer");
  return file.json["buffers"][0];
}

void CheckViews(const GltfFile& file, const std::filesystem::path& path) {
  std::uint32_t offset = 0;
  for (const auto& view : file.json["bufferViews"].GetArray()) {
    const std::uint32_t start = view.HasMember("byteOffset") ? view["byteOffset"].GetUint() : 0;
    Check(start == offset, path, Expected("a view's byteOffset", offset, start));
    offset += view["byteLength"].GetUint();
  }
  const std::uint32_t length = Buffer(file, path)["byteLength"].GetUint();
  Check(length == offset, path, Expected("the buffer's byteLength", offset, length));
}

struct ComponentFormat {
  std::size_t size;
  double (*read)(const std::uint8_t*);
};

ComponentFormat FormatOf(int componentType) {
  switch (componentType) {
    case 5123:
      return {2, [](const std::uint8_t* bytes) { return static_cast<double>(ValueAt<std::uint16_t>(bytes)); }};
    case 5125:
      return {4, [](const std::uint8_t* bytes) { return static_cast<double>(ValueAt<std::uint32_t>(bytes)); }};
    case 5126:
      return {4, [](const std::uint8_t* bytes) { return static_cast<double>(ValueAt<float>(bytes)); }};
    default:
      throw std::runtime_error("unknown componentType " + std::to_string(componentType));
  }
}

std::size_t ComponentCount(const std::string& type) {
  if (type == "SCALAR") return 1;
  if (type == "VEC2") return 2;
  if (type == "VEC3") return 3;
  if (type == "VEC4" || type == "MAT2") return 4;
  if (type == "MAT3") return 9;
  if (type == "MAT4") return 16;
  throw std::runtime_error("unknown accessor type " + type);
}

}  // namespace

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  Check(stream.good(), path, "can't be opened");
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

GlbChunks ReadGlbChunks(const std::filesystem::path& path) {
  const std::string file = ReadWholeFile(path);
  Check(file.size() >= 28, path, "too short for a .glb: " + std::to_string(file.size()) + " bytes");
  Check(file.compare(0, 4, "glTF") == 0, path, "doesn't begin with glTF");
  Check(U32At(file, 4) == 2, path, Expected("the version", 2, U32At(file, 4)));
  Check(U32At(file, 8) == file.size(), path, Expected("the length", file.size(), U32At(file, 8)));
  const std::size_t jsonBytes = U32At(file, 12);
  Check(jsonBytes % 4 == 0, path, "the JSON chunk isn't aligned");
  Check(file.compare(16, 4, "JSON") == 0, path, "the first chunk isn't JSON");
  Check(jsonBytes + 28 <= file.size(), path, "the JSON chunk leaves the file");
  const std::size_t binBytes = U32At(file, 20 + jsonBytes);
  Check(binBytes % 4 == 0, path, "the BIN chunk isn't aligned");
  Check(file.compare(24 + jsonBytes, 4, "BIN\0", 4) == 0, path, "the second chunk isn't BIN");
  Check(28 + jsonBytes + binBytes == file.size(), path,
        Expected("the BIN chunk's length", file.size() - 28 - jsonBytes, binBytes));

  GlbChunks chunks;
  chunks.text = file.substr(20, jsonBytes);
  while (!chunks.text.empty() && chunks.text.back() == ' ') chunks.text.pop_back();
  chunks.padding = jsonBytes - chunks.text.size();
  Check(chunks.padding < 4, path, "more spaces behind the text than it needs");
  chunks.bytes = BytesOf(file.substr(28 + jsonBytes));
  return chunks;
}

GltfFile ReadGltfFile(const std::filesystem::path& path) {
  GltfFile file;
  if (path.extension() == ".glb") {
    GlbChunks chunks = ReadGlbChunks(path);
    file.text = std::move(chunks.text);
    file.bytes = std::move(chunks.bytes);
    ParseText(file, path);
  } else {
    file.text = ReadWholeFile(path);
    ParseText(file, path);
    const rapidjson::Value& buffer = Buffer(file, path);
    Check(buffer.HasMember("uri"), path, "the buffer has no uri");
    file.bytes = BytesOf(ReadWholeFile(path.parent_path() / buffer["uri"].GetString()));
  }
  const std::uint32_t length = Buffer(file, path)["byteLength"].GetUint();
  Check(length == file.bytes.size(), path, Expected("the buffer's byteLength", file.bytes.size(), length));
  CheckViews(file, path);
  return file;
}

std::vector<double> AccessorValues(const GltfFile& file, std::uint32_t accessor) {
  const auto& accessors = file.json["accessors"];
  if (accessor >= accessors.Size()) throw std::runtime_error("no accessor " + std::to_string(accessor));
  const auto& object = accessors[accessor];
  const auto& view = file.json["bufferViews"][object["bufferView"].GetUint()];
  const ComponentFormat format = FormatOf(object["componentType"].GetInt());
  const std::size_t count = object["count"].GetUint() * ComponentCount(object["type"].GetString());
  const std::size_t start = view.HasMember("byteOffset") ? view["byteOffset"].GetUint() : 0;
  if (count * format.size > view["byteLength"].GetUint())
    throw std::runtime_error("accessor " + std::to_string(accessor) + " leaves its view");
  std::vector<double> values;
  values.reserve(count);
  for (std::size_t i = 0; i < count; ++i) values.push_back(format.read(&file.bytes.at(start + i * format.size)));
  return values;
}

std::string TextOf(const rapidjson::Value& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace test_support
