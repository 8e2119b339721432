#include "readers/foreign_reader.h"

#include "readers/import_names.h"
#include "readers/import_process.h"
#include "readers/mapped_file.h"
#include "readers/program_files.h"
#include "readers/temporary_directory.h"

#include <fmt/core.h>
#include <rapidjson/document.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace readers {
namespace {

namespace fs = std::filesystem;

// A list in text takes up to sixteen times its length as a tree, so a scene file that is longer than this part of
// the memory limit could make this program pass the limit.
constexpr std::uint64_t kTextShare = 16;
constexpr std::uint64_t kLongestReport = std::uint64_t{16} << 20;
constexpr std::size_t kMostWarnings = 1000;

[[noreturn]] void Fail(const fs::path& file, const std::string& reason) {
  throw InputError(file.string() + ": " + reason);
}

// A file in the private directory that is what it seems: no link, no pipe, no other name of a file elsewhere.
bool IsPlainFile(const fs::path& path, std::uint64_t largestSize) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
         static_cast<std::uint64_t>(status.st_size) <= largestSize;
}

std::shared_ptr<const TemporaryDirectory> MakePrivateDirectory(const fs::path& file) {
  try {
    return std::make_shared<const TemporaryDirectory>(fs::temp_directory_path());
  } catch (const std::system_error& error) {
    Fail(file, "no folder for temporary files can be made: " + error.code().message());
  }
}

ImportCall CallFor(const fs::path& file, const ReadOptions& options, const fs::path& directory) {
  ImportCall call;
  call.program = ImporterFile();
  call.directory = directory;
  call.largestSize = options.importMemory;
  call.timeout = options.importTimeout;
  call.arguments = {fmt::format("--memory={}", options.importMemory),
                    fmt::format("--seconds={}", options.importTimeout.count())};
  if (options.metersPerUnit) call.arguments.push_back(fmt::format("--unit={}", *options.metersPerUnit));
  if (options.upAxis)
    call.arguments.push_back(fmt::format("--up-axis={}", "xyz"[static_cast<int>(*options.upAxis)]));
  call.arguments.insert(call.arguments.end(), {"--", fs::absolute(file).string(), directory.string()});
  return call;
}

std::vector<std::string> Texts(const rapidjson::Value& root, const char* key) {
  std::vector<std::string> texts;
  const auto list = root.FindMember(key);
  if (list == root.MemberEnd() || !list->value.IsArray()) return texts;
  for (const rapidjson::Value& text : list->value.GetArray())
    if (text.IsString()) texts.emplace_back(text.GetString(), text.GetStringLength());
  return texts;
}

void TakeTexture(const fs::path& directory, const std::string& name, std::uint64_t largestSize,
                 ReadReport& report) {
  const fs::path texture = directory / kStagedTextures / name;
  const bool isBareName = texture.filename() == name && name != "." && name != "..";
  if (isBareName && IsPlainFile(texture, largestSize)) report.temporaryImages.push_back(texture);
}

// What the importer may have read: files below the model's folder, named without a detour.
class ReadableFiles {
 public:
  explicit ReadableFiles(const fs::path& model) {
    std::error_code error;
    folder_ = fs::canonical(fs::absolute(model, error).parent_path(), error);
  }

  bool Hold(const fs::path& path) const {
    const auto [end, place] = std::mismatch(folder_.begin(), folder_.end(), path.begin(), path.end());
    return !folder_.empty() && end == folder_.end() && place != path.end() && path == path.lexically_normal();
  }

 private:
  fs::path folder_;
};

// Takes warnings, textures and files that were read from the importer's own report.
void ReadImportReport(const fs::path& file, const fs::path& directory, const ReadOptions& options,
                      ReadReport& report) {
  const fs::path path = directory / kStagedReport;
  if (!IsPlainFile(path, kLongestReport)) Fail(file, "the importer gave no report");
  const auto mapped = MappedFile::Open(path);
  rapidjson::Document root;
  root.Parse<rapidjson::kParseIterativeFlag>(mapped->Begin(), mapped->Bytes().size());
  if (root.HasParseError() || !root.IsObject()) Fail(file, "the importer gave a broken report");
  std::vector<std::string> warnings = Texts(root, "warnings");
  const std::size_t count = std::min(warnings.size(), kMostWarnings);
  for (std::size_t index = 0; index < count; ++index)
    report.warnings.push_back(file.string() + ": " + PlainLine(std::move(warnings[index])));
  if (warnings.size() > count)
    report.warnings.push_back(fmt::format("{}: {} more warnings", file.string(), warnings.size() - count));
  for (const std::string& name : Texts(root, "textures"))
    TakeTexture(directory, name, options.importMemory, report);
  const ReadableFiles readable(file);
  for (const std::string& other : Texts(root, "files"))
    if (readable.Hold(other)) report.files.emplace_back(other);
}

headless::SceneData ReadStagedScene(const fs::path& file, const fs::path& directory, const ReadOptions& options) {
  const fs::path path = directory / kStagedScene;
  if (!IsPlainFile(path, options.importMemory)) Fail(file, "the importer gave no scene");
  if (fs::file_size(path) > options.importMemory / kTextShare)
    Fail(file, fmt::format("the scene has too much besides its arrays for its limit of {} MiB",
                           options.importMemory >> 20));
  try {
    ReadReport ignored;  // of the arrays' file, which nobody else can name
    return ReadSceneFile(path, ignored);
  } catch (const InputError& error) {
    std::string_view reason = error.what();
    const std::string prefix = path.string();
    if (reason.substr(0, prefix.size()) == prefix) reason.remove_prefix(prefix.size());
    Fail(file, "the importer gave a broken scene" + PlainLine(std::string(reason)));
  }
}

// Images that the file held are named by their bare names as yet.
void NameTemporaryImages(const ReadReport& report, headless::SceneData& scene) {
  for (headless::ItemData& item : scene.items) {
    if (!item.imagePath) continue;
    for (const fs::path& image : report.temporaryImages)
      if (image.filename() == *item.imagePath) {
        item.imagePath = image.string();
        break;
      }
  }
}

}  // namespace

headless::SceneData ReadImported(const fs::path& file, const fs::path& directory, const ReadOptions& options,
                                 ReadReport& report) {
  ReadImportReport(file, directory, options, report);
  headless::SceneData scene = ReadStagedScene(file, directory, options);
  scene.directory = file.parent_path().string();
  NameTemporaryImages(report, scene);
  return scene;
}

headless::SceneData ReadForeign(const fs::path& file, const ReadOptions& options, ReadReport& report) {
  MappedFile::Open(file);  // tells what isn't there, can't be read or is no file
  const auto directory = MakePrivateDirectory(file);
  if (const std::optional<std::string> reason = RunImporter(CallFor(file, options, directory->Path())))
    Fail(file, *reason);
  headless::SceneData scene = ReadImported(file, directory->Path(), options, report);
  if (!report.temporaryImages.empty()) report.keepAlive = directory;
  return scene;
}

}  // namespace readers
