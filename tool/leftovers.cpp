#include "tool/leftovers.h"

#include "headless/whole_file.h"
#include "tool/file_flush.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRandomLetters = 6;

// False when there is no such file. A link isn't followed.
bool Identify(const fs::path& file, JournalMove& move) {
  struct stat status;
  if (lstat(file.c_str(), &status) != 0) return false;
  move.inode = status.st_ino;
  move.size = static_cast<std::uint64_t>(status.st_size);
  move.changed = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  return true;
}

bool IsSameFile(const fs::path& file, const JournalMove& move) {
  JournalMove found;
  return Identify(file, found) && found.inode == move.inode && found.size == move.size &&
         found.changed == move.changed;
}

// Empty when there is no whole journal, which is written in one step; nothing when it can't be read.
std::optional<std::vector<JournalMove>> ReadJournal(const fs::path& directory) {
  const fs::path file = directory / "journal";
  std::error_code error;
  std::vector<JournalMove> moves;
  if (fs::symlink_status(file, error).type() == fs::file_type::not_found) return moves;
  std::string text;
  try {
    text = headless::ReadSmallFile(file, fs::file_size(file));
  } catch (const std::exception&) {
    return std::nullopt;
  }
  rapidjson::Document root;
  root.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
  if (root.HasParseError() || !root.IsArray()) return moves;
  for (const rapidjson::Value& row : root.GetArray()) {
    if (!row.IsArray() || row.Size() != 5 || !row[0].IsString() || !row[1].IsUint64() || !row[2].IsUint64() ||
        !row[3].IsInt64() || !row[4].IsBool())
      return std::vector<JournalMove>();
    moves.push_back({{row[0].GetString(), row[0].GetStringLength()},
                     row[1].GetUint64(),
                     row[2].GetUint64(),
                     row[3].GetInt64(),
                     row[4].GetBool()});
  }
  return moves;
}

// Undoes the moves of a run that was killed between the first and the last one. A file that isn't the run's own
// any more is left alone. False when a file could not be put back or looked at.
bool UndoMoves(const fs::path& directory, std::vector<fs::path>& restored) {
  const auto moves = ReadJournal(directory);
  if (!moves) return false;
  if (moves->empty()) return true;
  std::error_code error;
  const fs::file_type last = fs::symlink_status(directory / "new" / moves->back().name, error).type();
  if (last == fs::file_type::not_found) return true;
  if (last == fs::file_type::none) return false;
  for (std::size_t place = 0; place < moves->size(); ++place) {
    const JournalMove& move = (*moves)[place];
    const fs::path file = directory.parent_path() / move.name;
    if (fs::symlink_status(file, error).type() == fs::file_type::none) return false;
    if (!IsSameFile(file, move)) continue;
    if (move.hasOld)
      fs::rename(directory / "old" / std::to_string(place), file, error);
    else
      fs::remove(file, error);
    if (error) return false;
    restored.push_back(file);
  }
  FlushToDisk(directory.parent_path());
  return true;
}

bool IsStagingName(std::string_view name) {
  const std::string_view prefix = kStagingPrefix;
  return name.size() == prefix.size() + kRandomLetters && name.starts_with(prefix) &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
         });
}

bool IsOwnDirectory(const fs::path& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

// -1 when the file can't be opened. Not locked: errno tells why, ENOENT when whoever held it before removed it.
int OpenLock(const fs::path& directory, int flags, bool& locked) {
  const int lock = open((directory / "lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
  if (lock < 0 || flock(lock, LOCK_EX | LOCK_NB) != 0) return lock;
  struct stat status;
  locked = fstat(lock, &status) == 0 && status.st_nlink > 0;
  if (!locked) errno = ENOENT;
  return lock;
}

void ClearLeftover(const fs::path& directory, std::vector<fs::path>& restored) {
  // Killed before there was a lock, or about to make it: then the other run takes another directory.
  if (rmdir(directory.c_str()) == 0) return;
  bool locked = false;
  const int lock = OpenLock(directory, 0, locked);
  if (locked && UndoMoves(directory, restored)) RemoveStaging(directory.c_str());
  if (lock >= 0) close(lock);
}

}  // namespace

std::vector<fs::path> ListFolder(const fs::path& folder) {
  const auto close = [](DIR* open) { closedir(open); };
  const std::unique_ptr<DIR, decltype(close)> open(opendir(folder.c_str()), close);
  std::vector<fs::path> entries;
  while (open) {
    errno = 0;
    const dirent* const entry = readdir(open.get());
    if (!entry) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back(folder / name);
  }
  if (errno != 0)
    throw fs::filesystem_error("can't be listed", folder, std::error_code(errno, std::generic_category()));
  return entries;
}

void WriteJournal(const fs::path& directory, std::vector<JournalMove> moves) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  writer.StartArray();
  for (JournalMove& move : moves) {
    Identify(directory / "new" / move.name, move);
    writer.StartArray();
    writer.String(move.name.data(), static_cast<rapidjson::SizeType>(move.name.size()));
    writer.Uint64(move.inode);
    writer.Uint64(move.size);
    writer.Int64(move.changed);
    writer.Bool(move.hasOld);
    writer.EndArray();
  }
  writer.EndArray();
  const fs::path draft = directory / "journal.draft";
  std::ofstream stream(draft, std::ios::binary);
  stream.write(text.GetString(), static_cast<std::streamsize>(text.GetSize()));
  stream.close();
  if (!stream)
    throw fs::filesystem_error("can't be written", draft, std::error_code(errno, std::generic_category()));
  FlushToDisk(draft);
  fs::rename(draft, directory / "journal");
  FlushToDisk(directory);
}

int LockStaging(const fs::path& directory) {
  bool locked = false;
  const int lock = OpenLock(directory, O_CREAT, locked);
  // A file system without locks does too: then nobody else can take the directory for a leftover.
  if (lock < 0 || locked || (errno != EWOULDBLOCK && errno != ENOENT)) return lock;
  close(lock);
  return -1;
}

namespace {

void RemoveOnce(const fs::path& directory) {
  std::error_code ignored;
  bool hadOthers = false;
  for (const fs::path& entry : ListFolder(directory)) {
    if (entry.filename() == "lock") continue;
    hadOthers = true;
    if (fs::is_directory(fs::symlink_status(entry, ignored)))
      for (const fs::path& file : ListFolder(entry)) fs::remove(file, ignored);
    fs::remove(entry, ignored);
  }
  if (fs::remove(directory / "lock", ignored) || !hadOthers) fs::remove(directory, ignored);
}

}  // namespace

void RemoveStaging(const char* directory) noexcept {
  constexpr int kAttempts = 2;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    try {
      RemoveOnce(directory);
      if (access(directory, F_OK) != 0) return;
    } catch (const std::exception&) {  // what stays is cleared by the next run
    }
  }
}

std::vector<fs::path> ClearLeftovers(const fs::path& parent) {
  std::vector<fs::path> restored;
  try {
    for (const fs::path& directory : ListFolder(parent))
      if (IsStagingName(directory.filename().string()) && IsOwnDirectory(directory))
        ClearLeftover(directory, restored);
  } catch (const std::system_error&) {  // the next run tries again
  }
  return restored;
}

}  // namespace tool
