#include "tool/model_file.h"

#include "readers/mapped_file.h"
#include "readers/read_scene.h"
#include "tool/base64.h"
#include "tool/model_check.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;
using readers::Fail;
using readers::Json;

constexpr std::string_view kMagic = "glTF";
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;
constexpr std::uint32_t kBinaryChunk = 0x004E4942;
constexpr std::uint64_t kLargestJson = 64u << 20;  // the tree takes many times as much memory

// The images that browsers show, by how they begin.
struct ImageType {
  std::string_view beginning;
  std::string_view later;  // at byte 8
  const char* mimeType;
};
constexpr ImageType kImageTypes[] = {
    {"\x89PNG\r\n\x1A\n", "", "image/png"},
    {"\xFF\xD8\xFF", "", "image/jpeg"},
    {"RIFF", "WEBP", "image/webp"},
    {"GIF8", "", "image/gif"},
    {"BM", "", "image/bmp"},
};

const char* FindImageType(std::string_view bytes) {
  for (const ImageType& type : kImageTypes)
    if (bytes.starts_with(type.beginning) &&
        bytes.substr(std::min<std::size_t>(8, bytes.size())).starts_with(type.later))
      return type.mimeType;
  return nullptr;
}

std::uint32_t ReadU32(std::string_view bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  return value;
}

void PutU32(std::string& bytes, std::size_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
}

struct Chunks {
  std::string_view json;
  std::optional<std::string_view> binary;
};

// Header: magic, version, length. Each chunk: length, type, bytes.
Chunks SplitGlb(std::string_view file, const std::string& name) {
  const auto fail = [&](const std::string& reason) { throw readers::InputError(name + ": " + reason); };
  if (file.size() < 20) fail("it ends within its header");
  if (ReadU32(file, 4) != 2) fail("it is of version " + std::to_string(ReadU32(file, 4)) + ", not 2");
  if (ReadU32(file, 8) != file.size())
    fail("it has " + std::to_string(file.size()) + " bytes where its header says " +
         std::to_string(ReadU32(file, 8)));
  Chunks chunks;
  for (std::size_t offset = 12; offset < file.size();) {
    const std::string place = "the chunk at byte " + std::to_string(offset);
    if (file.size() - offset < 8 || ReadU32(file, offset) > file.size() - offset - 8)
      fail(place + " reaches beyond the file");
    const std::string_view bytes = file.substr(offset + 8, ReadU32(file, offset));
    const std::uint32_t type = ReadU32(file, offset + 4);
    if (offset == 12 && type != kJsonChunk) fail(place + " is not the JSON");
    if (offset == 12) chunks.json = bytes;
    if (offset > 12 && type == kBinaryChunk && !chunks.binary) chunks.binary = bytes;
    offset += 8 + bytes.size();
  }
  return chunks;
}

// With its percent signs decoded; as it is when one of them doesn't stand before two digits.
std::string DecodedPath(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned char value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2 || value == 0)
      return std::string(text);
    decoded += static_cast<char>(value);
    i += 2;
  }
  return decoded;
}

class ModelReader {
 public:
  explicit ModelReader(const fs::path& file) : file_(file), name_(file.string()) {}

  ModelFile Read();

 private:
  using Bytes = std::string_view;

  void ReadBuffers(std::optional<Bytes> binaryChunk);
  void ReadImages();
  // The bytes that a uri stands for; they stay valid as long as the reader.
  Bytes ReadUri(const Json& uri);
  Bytes ReadDataUri(const Json& uri);
  Bytes OpenBeside(const Json& uri, const std::string& path);
  // Adds bytes to the one buffer, and says where they begin.
  std::uint64_t Append(Bytes bytes);
  void WriteGlb();

  static Bytes BytesOf(const readers::MappedFile& file) { return {file.Begin(), file.Bytes().size()}; }

  fs::path file_;
  std::string name_;
  rapidjson::Document root_;
  std::string binary_;
  std::map<fs::path, std::shared_ptr<const readers::MappedFile>> opened_;
  std::vector<std::unique_ptr<const std::string>> decoded_;  // what data uris hold
  ModelFile model_;
};

ModelReader::Bytes ModelReader::ReadDataUri(const Json& uri) {
  constexpr Bytes kMark = ";base64,";
  const Bytes text = readers::TextView(uri);
  const std::size_t mark = text.find(kMark);
  std::optional<std::string> bytes;
  if (mark != Bytes::npos) bytes = DecodeBase64(text.substr(mark + kMark.size()));
  if (!bytes) Fail(uri, "the data in the uri isn't base64");
  decoded_.push_back(std::make_unique<const std::string>(std::move(*bytes)));
  return *decoded_.back();
}

ModelReader::Bytes ModelReader::OpenBeside(const Json& uri, const std::string& path) {
  std::error_code error;
  const fs::path folder = fs::weakly_canonical(fs::absolute(file_, error).parent_path(), error);
  const fs::path canonical = error ? fs::path() : fs::weakly_canonical(folder / path, error);
  if (error ||
      std::mismatch(folder.begin(), folder.end(), canonical.begin(), canonical.end()).first != folder.end())
    Fail(uri, "the file lies outside the model's folder");
  std::shared_ptr<const readers::MappedFile>& mapped = opened_[canonical];
  if (mapped) return BytesOf(*mapped);
  try {
    mapped = readers::MappedFile::Open(canonical);
  } catch (const readers::InputError& fault) {
    Fail(uri, fault.what());
  }
  model_.files.push_back({path, canonical, mapped->Bytes().size()});
  return BytesOf(*mapped);
}

ModelReader::Bytes ModelReader::ReadUri(const Json& uri) {
  const Bytes text = readers::TextView(uri);
  if (text.starts_with("data:")) return ReadDataUri(uri);
  if (text.find("://") != Bytes::npos) Fail(uri, "only files beside the model are read");
  std::string path = DecodedPath(text);
  // A saver may write names as they are, with percent signs of their own.
  std::error_code error;
  if (!fs::exists(file_.parent_path() / path, error)) path = text;
  const fs::path parts(path);
  if (parts.empty() || parts.is_absolute() || std::find(parts.begin(), parts.end(), "..") != parts.end())
    Fail(uri, "the path leads out of the model's folder");
  return OpenBeside(uri, path);
}

std::uint64_t ModelReader::Append(Bytes bytes) {
  binary_.append((4 - binary_.size() % 4) % 4, '\0');
  if (binary_.size() + bytes.size() > kLargestModel)
    throw readers::InputError(name_ + ": the model takes more than " + std::to_string(kLargestModel >> 20) +
                              " MiB");
  binary_.append(bytes);
  return binary_.size() - bytes.size();
}

// Puts all buffers into one, and moves the views along.
void ModelReader::ReadBuffers(std::optional<Bytes> binaryChunk) {
  if (!root_.HasMember("buffers")) return;
  std::vector<std::uint64_t> starts;
  for (const Json& buffer : root_["buffers"].GetArray()) {
    const Json* const uri = readers::Find(buffer, "uri");
    if (!uri && !(starts.empty() && binaryChunk)) Fail(buffer, "the buffer has neither uri nor binary chunk");
    const Bytes bytes = uri ? ReadUri(*uri) : *binaryChunk;
    const std::uint64_t length = ReadNatural(readers::Require(buffer, "byteLength"));
    if (length > bytes.size())
      Fail(buffer, "the buffer shall have " + std::to_string(length) + " bytes, and there are " +
                       std::to_string(bytes.size()));
    starts.push_back(Append(bytes.substr(0, length)));
  }
  if (!root_.HasMember("bufferViews")) return;
  for (Json& view : root_["bufferViews"].GetArray()) {
    const Json* const offset = readers::Find(view, "byteOffset");
    const std::uint64_t moved = (offset ? offset->GetUint() : 0) + starts[view["buffer"].GetUint()];
    view.RemoveMember("byteOffset");
    view.AddMember("byteOffset", Json(moved), root_.GetAllocator());
    view["buffer"].SetUint(0);
  }
}

// Puts every image into a view, and sets its type by how it begins: a wrong one would keep it from being shown.
void ModelReader::ReadImages() {
  if (!root_.HasMember("images")) return;
  auto& allocator = root_.GetAllocator();
  if (!root_.HasMember("bufferViews")) root_.AddMember("bufferViews", Json(rapidjson::kArrayType), allocator);
  Json& images = root_["images"];
  Json& views = root_["bufferViews"];
  for (Json& image : images.GetArray()) {
    if (const Json* const uri = readers::Find(image, "uri")) {
      const Bytes bytes = ReadUri(*uri);
      Json view(rapidjson::kObjectType);
      view.AddMember("buffer", 0, allocator);
      view.AddMember("byteLength", Json(static_cast<std::uint64_t>(bytes.size())), allocator);
      view.AddMember("byteOffset", Json(Append(bytes)), allocator);
      if (!image.HasMember("name") && !readers::TextView(*uri).starts_with("data:"))
        image.AddMember("name", Json(DecodedPath(readers::TextView(*uri)).c_str(), allocator), allocator);
      for (const char* key : {"uri", "bufferView"}) image.RemoveMember(key);
      image.AddMember("bufferView", views.Size(), allocator);
      views.PushBack(view, allocator);
    }
    const Json& view = views[static_cast<rapidjson::SizeType>(ReadNatural(readers::Require(image, "bufferView")))];
    const char* const type =
        FindImageType(Bytes(binary_).substr(view["byteOffset"].GetUint(), view["byteLength"].GetUint()));
    image.RemoveMember("mimeType");
    image.AddMember("mimeType", Json(type ? type : "application/octet-stream", allocator), allocator);
    if (type) continue;
    const Json* const name = readers::Find(image, "name");
    model_.warnings.push_back("image " + std::to_string(&image - images.Begin()) +
                              (name ? " \"" + readers::ReadText(*name) + "\"" : "") +
                              " is none of PNG, JPEG, WebP, GIF and BMP, which is all that browsers show");
  }
}

void ModelReader::WriteGlb() {
  auto& allocator = root_.GetAllocator();
  root_.RemoveMember("buffers");
  binary_.append((4 - binary_.size() % 4) % 4, '\0');
  if (!binary_.empty()) {
    Json buffer(rapidjson::kObjectType);
    buffer.AddMember("byteLength", Json(static_cast<std::uint64_t>(binary_.size())), allocator);
    root_.AddMember("buffers", Json(rapidjson::kArrayType).PushBack(buffer, allocator), allocator);
  }
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  root_.Accept(writer);
  while (text.GetSize() % 4 != 0) text.Put(' ');

  const std::size_t binaryChunk = binary_.empty() ? 0 : 8 + binary_.size();
  model_.glb = kMagic;
  for (const std::size_t word : {std::size_t{2}, 20 + text.GetSize() + binaryChunk, text.GetSize()})
    PutU32(model_.glb, word);
  PutU32(model_.glb, kJsonChunk);
  model_.glb.append(text.GetString(), text.GetSize());
  if (binary_.empty()) return;
  PutU32(model_.glb, binary_.size());
  PutU32(model_.glb, kBinaryChunk);
  model_.glb += binary_;
}

ModelFile ModelReader::Read() {
  const std::shared_ptr<const readers::MappedFile> mapped = readers::MappedFile::Open(file_);
  const Bytes bytes = BytesOf(*mapped);
  model_.files.push_back({file_.filename().string(), file_, bytes.size()});
  const Chunks chunks = bytes.starts_with(kMagic) ? SplitGlb(bytes, name_) : Chunks{bytes, std::nullopt};
  if (chunks.json.size() > kLargestJson)
    throw readers::InputError(name_ + ": its JSON takes more than " + std::to_string(kLargestJson >> 20) + " MiB");
  readers::ParseJson(chunks.json, name_, readers::LongLists::InTree, root_);
  try {
    CheckModel(root_);
    ReadBuffers(chunks.binary);
    ReadImages();
  } catch (const readers::JsonFault& fault) {
    const std::string place = readers::JsonPlace(root_, fault);
    throw readers::InputError(name_ + ": " + (place.empty() ? "" : place + ": ") + fault.reason);
  }
  WriteGlb();
  return std::move(model_);
}

}  // namespace

ModelFile ReadModelFile(const fs::path& file) { return ModelReader(file).Read(); }

}  // namespace tool
