#include "readers/obj_parser.h"

#include "readers/mtl_parser.h"
#include "readers/obj_statements.h"
#include "readers/read_scene.h"
#include "readers/text_numbers.h"
#include "readers/text_pieces.h"
#include "readers/text_utf8.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace readers {
namespace {

using headless::kNone;

enum Stream { kPoints, kUvs, kNormals };
constexpr const char* kStreamNames[] = {"point", "texture coordinate", "normal"};

// An index beyond what the file held when it was read; more may follow.
struct ForwardIndex {
  const char* place = nullptr;
  std::int64_t index = 0;
};

// The token at a place, as messages show it.
std::string Shown(const char* place) { return ToUtf8(std::string(TokenAt(place).substr(0, 40))); }

// Fills a stream up to a corner and lets it grow. What isn't touched costs no memory.
[[gnu::noinline]] void MakeRoom(std::vector<std::uint32_t>& indices, std::size_t corner) {
  if (corner >= indices.capacity()) indices.reserve(4 * corner + 4);
  indices.resize(corner, kNone);
}

bool AtStatementEnd(const char* text) { return IsLineEnd(*text) || *text == '#'; }

// Lines may lie in any order: statements are told apart by their first word, and state statements (o, g,
// usemtl, s) take effect with the next face.
class Parser {
 public:
  Parser(std::string_view text, const std::string& fileName, const std::string& stem)
      : text_(text), fileName_(fileName), stem_(stem) {}

  ObjData Run() {
    for (const std::string_view piece : text_.Pieces()) ParsePiece(piece);
    CheckCounts();
    data_.hasStatements |= counts_[kPoints] + counts_[kUvs] + counts_[kNormals] > 0;
    std::erase_if(data_.meshes, [](const ObjMesh& mesh) { return mesh.polygonStarts.size() == 1; });
    return std::move(data_);
  }

 private:
  void ParsePiece(std::string_view piece);
  const char* ParseStatement(const char* text);
  const char* ParseByWord(const char* text);
  const char* ParseNamed(Statement statement, const char* text);
  const char* ParsePoint(const char* text);
  const char* ParseUv(const char* text);
  const char* ParseNormal(const char* text);
  const char* ParseFace(const char* text);
  const char* ParseCorner(const char* text, ObjMesh& mesh);
  const char* ParseComment(const char* text);
  template <int kNeeded, int kMost>
  int ReadNumbers(const char*& text, float (&values)[kMost], std::string_view what);
  const char* ReadNumber(const char* text, float& value);
  const char* ReadIndex(const char* text, Stream stream, std::vector<std::uint32_t>& indices, std::size_t corner);
  [[gnu::noinline]] const char* ReadOtherIndex(const char* text, Stream stream, std::uint32_t& entry);
  std::uint32_t Resolve(const char* place, std::int64_t index, Stream stream);
  void AddColor(std::size_t point, const float* color);
  void ReadColorBlock(const char* text);
  void ApplyState();
  void CheckCounts() const;
  [[noreturn]] void Fail(const char* place, const std::string& reason) const;
  [[noreturn]] void FailNumber(const char* place) const;
  [[noreturn]] void FailIndex(const char* place, std::int64_t index, Stream stream) const;

  TextPieces text_;
  const std::string& fileName_;
  const std::string& stem_;
  const char* end_ = nullptr;  // of the piece that is being read

  ObjData data_;
  std::int64_t counts_[3] = {};           // so far, per stream
  std::vector<ForwardIndex> forward_[3];  // each with an index above the one before
  std::size_t coloredByBlocks_ = 0;       // points

  // The state for the next faces, and whether a statement touched it after the last one.
  std::string object_;
  std::string group_;
  std::uint32_t material_ = kNone;
  bool smooth_ = true;
  bool stateChanged_ = true;
  NameTable meshNames_;  // object or group behind its letter; a number is a place in ObjData::meshes
  std::size_t mesh_ = 0;
};

void Parser::ParsePiece(std::string_view piece) {
  end_ = piece.data() + piece.size();
  for (const char* text = piece.data(); text != end_;) {
    text = SkipBlanks(text);
    if (EndsToken(*text)) {  // a line end; some programs end their files with a zero byte
      ++text;
    } else if (*text == '#') {
      text = ParseComment(text);
    } else {
      text = ParseStatement(text);
    }
  }
}

const char* Parser::ParseStatement(const char* text) {
  // The four that files consist of come first.
  if (text[0] == 'f' && IsBlank(text[1])) return ParseFace(text + 1);
  if (text[0] == 'v') {
    if (IsBlank(text[1])) return ParsePoint(text + 1);
    if (text[1] == 't' && IsBlank(text[2])) return ParseUv(text + 2);
    if (text[1] == 'n' && IsBlank(text[2])) return ParseNormal(text + 2);
  }
  return ParseByWord(text);
}

const char* Parser::ParseByWord(const char* text) {
  const std::string_view word = TokenAt(text);
  const StatementWord entry = FindStatement(word);
  const char* rest = text + word.size();
  if (entry.statement != Statement::Skip || entry.skipped != Skipped::Unknown) data_.hasStatements = true;
  switch (entry.statement) {
    case Statement::Point:
      return ParsePoint(rest);
    case Statement::Uv:
      return ParseUv(rest);
    case Statement::Normal:
      return ParseNormal(rest);
    case Statement::Face:
      return ParseFace(rest);
    case Statement::Skip:
      if (entry.skipped == Skipped::Unknown && data_.firstUnknown.empty()) data_.firstUnknown = Shown(text);
      ++data_.skipped[static_cast<std::size_t>(entry.skipped)];
      return SkipStatement(text);
    default:
      return ParseNamed(entry.statement, rest);
  }
}

const char* Parser::ParseNamed(Statement statement, const char* text) {
  std::string name = StatementText(text);
  stateChanged_ = true;
  switch (statement) {
    case Statement::Object:
      object_ = std::move(name);
      break;
    case Statement::Group:
      group_ = std::move(name);
      break;
    case Statement::Material:
      material_ = data_.materialNames.Enter(name.empty() ? kDefaultMaterial : name);
      break;
    case Statement::Smoothing:
      smooth_ = name != "off" && name != "0";
      break;
    default:
      data_.libraries.push_back(std::move(name));
  }
  return SkipStatement(text);
}

// An object's polygons make a mesh, and groups within it are its parts. Groups outside objects are meshes.
void Parser::ApplyState() {
  stateChanged_ = false;
  const bool hasObject = !object_.empty();
  const std::string& name = hasObject ? object_ : !group_.empty() ? group_ : stem_;
  const char* const kind = hasObject ? "o" : !group_.empty() ? "g" : " ";
  mesh_ = meshNames_.Enter(kind + name);
  if (mesh_ == data_.meshes.size()) data_.meshes.emplace_back().name = name;

  ObjMesh& mesh = data_.meshes[mesh_];
  if (material_ == kNone) material_ = data_.materialNames.Enter(kDefaultMaterial);
  const std::uint32_t part = hasObject && !group_.empty() ? data_.partNames.Enter(group_) : kNone;
  const auto polygons = static_cast<std::uint32_t>(mesh.polygonStarts.size() - 1);
  const auto startRun = [polygons](std::vector<TagRun>& runs, std::uint32_t text) {
    if (!runs.empty() && runs.back().firstPolygon == polygons) runs.pop_back();
    if (runs.empty() || runs.back().text != text) runs.push_back({polygons, text});
  };
  startRun(mesh.materials, material_);
  startRun(mesh.parts, part);
}

const char* Parser::ReadNumber(const char* text, float& value) {
  const char* end = ReadFloat(text, end_, value);
  if (end) return end;
  // Some exporters write "3.1+e2". Other programs read the digits and pass over the rest.
  const std::string token(TokenAt(text));
  const std::size_t sign = token.find_first_of("+-", 1);
  if (sign == std::string::npos || sign + 2 >= token.size() ||
      (token[sign + 1] != 'e' && token[sign + 1] != 'E') ||
      token.find_first_not_of("0123456789", sign + 2) != std::string::npos) {
    FailNumber(text);
  }
  const std::string digits = token.substr(0, sign) + '\n';
  if (!ReadFloat(digits.data(), digits.data() + digits.size(), value)) FailNumber(text);
  ++data_.skipped[static_cast<std::size_t>(Skipped::BrokenExponents)];
  return text + token.size();
}

template <int kNeeded, int kMost>
int Parser::ReadNumbers(const char*& text, float (&values)[kMost], std::string_view what) {
  int count = 0;
  for (text = SkipBlanks(text); !AtStatementEnd(text); text = SkipBlanks(text)) {
    if (count == kMost) {
      text = SkipStatement(text);
      break;
    }
    text = ReadNumber(text, values[count++]);
  }
  if (count < kNeeded) {
    Fail(text, fmt::format("a {} needs {} number{}, found {}", what, kNeeded, kNeeded == 1 ? "" : "s", count));
  }
  return count;
}

const char* Parser::ParsePoint(const char* text) {
  float values[8];
  const int count = ReadNumbers<3>(text, values, "point");
  data_.points.insert(data_.points.end(), values, values + 3);
  ++counts_[kPoints];
  if (count < 6) return text;  // the fourth is a weight, which only curves and surfaces use
  const int first = count == 8 ? 4 : 3;
  const bool hasAlpha = count > 6;
  data_.hasAlpha |= hasAlpha;
  const float color[4] = {values[first], values[first + 1], values[first + 2],
                          hasAlpha ? values[first + 3] : 1.0f};
  AddColor(static_cast<std::size_t>(counts_[kPoints] - 1), color);
  return text;
}

const char* Parser::ParseUv(const char* text) {
  float values[3];
  const int count = ReadNumbers<1>(text, values, "texture coordinate");
  if (count == 1) values[1] = 0;
  data_.uvs.insert(data_.uvs.end(), values, values + 2);
  ++counts_[kUvs];
  return text;
}

const char* Parser::ParseNormal(const char* text) {
  float values[3];
  ReadNumbers<3>(text, values, "normal");
  data_.normals.insert(data_.normals.end(), values, values + 3);
  ++counts_[kNormals];
  return text;
}

const char* Parser::ParseFace(const char* text) {
  if (stateChanged_) ApplyState();
  ObjMesh& mesh = data_.meshes[mesh_];
  const std::size_t start = mesh.points.size();
  for (text = SkipBlanks(text); !AtStatementEnd(text); text = SkipBlanks(text)) text = ParseCorner(text, mesh);
  if (mesh.points.size() - start < 3) {
    ++data_.skipped[static_cast<std::size_t>(Skipped::ShortFaces)];
    mesh.points.resize(start);
    mesh.uvs.resize(std::min(mesh.uvs.size(), start));
    mesh.normals.resize(std::min(mesh.normals.size(), start));
    return text;
  }
  mesh.polygonStarts.push_back(static_cast<std::uint32_t>(mesh.points.size()));
  mesh.smooth |= smooth_;
  return text;
}

// A corner is point, point/uv, point//normal or point/uv/normal; an empty place counts as missing.
const char* Parser::ParseCorner(const char* text, ObjMesh& mesh) {
  const char* const place = text;
  const std::size_t corner = mesh.points.size();
  text = ReadIndex(text, kPoints, mesh.points, corner);
  if (*text == '/') {
    ++text;
    if (*text != '/' && !AtTokenEnd(text)) text = ReadIndex(text, kUvs, mesh.uvs, corner);
    if (*text == '/' && !AtTokenEnd(++text)) text = ReadIndex(text, kNormals, mesh.normals, corner);
  }
  if (!AtTokenEnd(text)) Fail(place, fmt::format("bad corner \"{}\"", Shown(place)));
  return text;
}

// Appends the index of a corner to its stream. Most indices are plain ones of what stands above.
inline const char* Parser::ReadIndex(const char* text, Stream stream, std::vector<std::uint32_t>& indices,
                                     std::size_t corner) {
  std::uint64_t number = 0;
  const char* end = ReadDigits(text, number);
  auto entry = static_cast<std::uint32_t>(number - 1);
  if (number - 1 >= static_cast<std::uint64_t>(counts_[stream]) || end - text > 18)
    end = ReadOtherIndex(text, stream, entry);
  if (indices.size() != corner || corner == indices.capacity()) MakeRoom(indices, corner);
  indices.push_back(entry);
  return end;
}

const char* Parser::ReadOtherIndex(const char* text, Stream stream, std::uint32_t& entry) {
  std::int64_t index = 0;
  const char* end = ReadInteger(text, index);
  if (!end) Fail(text, fmt::format("bad {} index in \"{}\"", kStreamNames[stream], Shown(text)));
  entry = Resolve(text, index, stream);
  return end;
}

std::uint32_t Parser::Resolve(const char* place, std::int64_t index, Stream stream) {
  const std::int64_t count = counts_[stream];
  if (index > count) {
    std::vector<ForwardIndex>& forward = forward_[stream];
    if (forward.empty() || index > forward.back().index) forward.push_back({place, index});
  } else if (index == 0 || -index > count) {
    FailIndex(place, index, stream);
  }
  return static_cast<std::uint32_t>(index < 0 ? count + index : index - 1);
}

void Parser::AddColor(std::size_t point, const float* color) {
  std::vector<std::uint32_t>& colors = data_.pointColors;
  if (colors.size() <= point) colors.resize(point + 1, kNone);
  colors[point] = static_cast<std::uint32_t>(data_.colors.size() / 4);
  data_.colors.insert(data_.colors.end(), color, color + 4);
}

const char* Parser::ParseComment(const char* text) {
  constexpr std::string_view kColorBlock = "#MRGB";
  if (TokenAt(text) == kColorBlock) ReadColorBlock(SkipBlanks(text + kColorBlock.size()));
  return SkipLine(text);
}

// A sculpting program's colours of the next points in order: mask, red, green and blue as two hexadecimal
// digits each. The mask says what a brush spares, which isn't an alpha.
void Parser::ReadColorBlock(const char* text) {
  const auto hex = [](char c) {
    if (IsDigit(c)) return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
  };
  for (; static_cast<std::int64_t>(coloredByBlocks_) < counts_[kPoints]; ++coloredByBlocks_, text += 8) {
    int digits[8];
    for (int i = 0; i < 8; ++i) {
      digits[i] = hex(text[i]);
      if (digits[i] < 0) return;
    }
    float color[4] = {0, 0, 0, 1};
    for (int i = 0; i < 3; ++i) color[i] = static_cast<float>(digits[2 * i + 2] * 16 + digits[2 * i + 3]) / 255.0f;
    AddColor(coloredByBlocks_, color);
  }
}

void Parser::CheckCounts() const {
  for (const Stream stream : {kPoints, kUvs, kNormals}) {
    for (const ForwardIndex& forward : forward_[stream]) {
      if (forward.index > counts_[stream]) FailIndex(forward.place, forward.index, stream);
    }
    if (counts_[stream] >= static_cast<std::int64_t>(kNone)) {
      throw InputError(fmt::format("{}: more than {} {}s", fileName_, kNone - 1, kStreamNames[stream]));
    }
  }
  for (const ObjMesh& mesh : data_.meshes) {
    if (mesh.points.size() >= kNone) throw InputError(fileName_ + ": too many polygon corners in " + mesh.name);
  }
}

void Parser::Fail(const char* place, const std::string& reason) const {
  throw InputError(fmt::format("{}:{}: {}", fileName_, text_.LineOf(place), reason));
}

void Parser::FailNumber(const char* place) const {
  double number = 0;
  const char* digits = place + (*place == '+');
  const auto [rest, error] = fast_float::from_chars(digits, end_, number);
  // What a double holds may still be too large for a float.
  const bool isNumber =
      error != std::errc::invalid_argument && AtTokenEnd(rest) && (digits == place || *digits != '-');
  Fail(place, fmt::format("{} \"{}\"", isNumber ? "not a finite number" : "bad number", Shown(place)));
}

void Parser::FailIndex(const char* place, std::int64_t index, Stream stream) const {
  Fail(place, fmt::format("{} index {} is out of range, there {} {} {}{}{}", kStreamNames[stream], index,
                          counts_[stream] == 1 ? "is" : "are", counts_[stream], kStreamNames[stream],
                          counts_[stream] == 1 ? "" : "s", index < 0 ? " so far" : ""));
}

}  // namespace

ObjData ParseObj(std::string_view text, const std::string& fileName, const std::string& stem) {
  return Parser(text, fileName, stem).Run();
}

}  // namespace readers
