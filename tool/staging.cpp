#include "tool/staging.h"

#include "tool/file_flush.h"
#include "tool/leftovers.h"
#include "tool/output_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdlib.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr int kTries = 1000;

fs::path DirectoryOf(const fs::path& target) {
  return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

// The saver may still be writing into it when a signal ends the command.
void RemoveWhileWritten(const fs::path& directory) {
  std::error_code ignored;
  for (int tries = 0; tries < kTries && fs::exists(directory, ignored); ++tries) RemoveStaging(directory.c_str());
}

struct Move {
  fs::path from, to;
  fs::path backup;  // the file that stood at `to`, empty for none
};

[[noreturn]] void ThrowOf(const Move& move, const std::error_code& error, const std::string& more = {}) {
  throw OutputError(move.to.string() + ": can't be replaced: " + error.message() + more);
}

// A second name keeps the old file reachable, so that the target is never missing.
void BackUp(Move& move, const fs::path& backup) {
  std::error_code error;
  // Where it can't be told whether there is one, linking it says why.
  if (fs::symlink_status(move.to, error).type() == fs::file_type::not_found) return;
  fs::create_hard_link(move.to, backup, error);
  if (error && fs::copy_file(move.to, backup, error)) FlushToDisk(backup);
  if (error) ThrowOf(move, error);
  move.backup = backup;
}

// Several files can't be replaced in one step, so the next run must be able to undo some of the moves.
void KeepOldFiles(std::vector<Move>& moves, const fs::path& directory) {
  std::vector<JournalMove> journal;
  for (Move& move : moves) {
    BackUp(move, directory / "old" / std::to_string(journal.size()));
    JournalMove& noted = journal.emplace_back();
    noted.name = move.from.filename().string();
    noted.hasOld = !move.backup.empty();
  }
  FlushToDisk(directory / "old");
  WriteJournal(directory, std::move(journal));
}

// False when an old file can't be put back.
bool PutBack(const std::vector<Move>& moves, std::size_t count) {
  bool isWhole = true;
  for (std::size_t place = 0; place < count; ++place) {
    std::error_code error;
    if (moves[place].backup.empty())
      fs::remove(moves[place].to, error);
    else
      fs::rename(moves[place].backup, moves[place].to, error);
    if (error) isWhole = false;
  }
  return isWhole;
}

}  // namespace

bool HaveSameBytes(const fs::path& one, const fs::path& other) {
  std::error_code error;
  if (!fs::is_regular_file(other, error) || fs::file_size(one, error) != fs::file_size(other, error)) return false;
  constexpr std::size_t kBlock = 65536;
  std::ifstream streams[] = {std::ifstream(one, std::ios::binary), std::ifstream(other, std::ios::binary)};
  std::string blocks[] = {std::string(kBlock, '\0'), std::string(kBlock, '\0')};
  while (streams[0] && streams[1]) {
    std::streamsize counts[2];
    for (int i = 0; i < 2; ++i) counts[i] = streams[i].read(blocks[i].data(), kBlock).gcount();
    if (counts[0] != counts[1] || blocks[0] != blocks[1]) return false;
  }
  return streams[0].eof() && streams[1].eof();
}

Staging::Staging(const fs::path& target, std::string stagedName)
    : target_(target), stagedName_(std::move(stagedName)) {
  std::error_code error;
  if (fs::is_directory(target_, error)) throw OutputError(target_.string() + ": is a directory");
  if (!fs::is_directory(fs::absolute(DirectoryOf(target_)), error))
    throw OutputError(target_.string() + ": there is no folder " + DirectoryOf(target_).string());
  MakeDirectory();
  for (const fs::path& file : ClearLeftovers(fs::absolute(DirectoryOf(target_))))
    notes_.push_back(file.string() + ": put back as it was before a run that was killed");
}

void Staging::MakeDirectory() {
  const auto fail = [&](const std::string& reason) {
    throw OutputError(target_.string() + ": can't write into " + DirectoryOf(target_).string() + ": " + reason);
  };
  const std::string pattern =
      (fs::absolute(DirectoryOf(target_)) / (std::string(kStagingPrefix) + "XXXXXX")).string();
  std::error_code error;
  // Between making the directory and locking it another run may take it for a leftover.
  std::optional<readers::InterruptPause> pause(std::in_place);
  for (int tries = 0; place_.lock < 0; ++tries) {
    place_.directory = pattern;
    if (!mkdtemp(place_.directory.data())) fail(std::strerror(errno));
    place_.lock = LockStaging(place_.directory);
    const int reason = errno;
    if (place_.lock < 0 && (fs::remove(place_.directory, error) || tries == kTries)) fail(std::strerror(reason));
  }
  removal_ = std::make_unique<readers::InterruptAction>(
      [directory = fs::path(place_.directory)] { RemoveWhileWritten(directory); });
  pause.reset();
  for (const char* folder : {"new", "old"})
    if (!fs::create_directory(fs::path(place_.directory) / folder, error)) fail(error.message());
}

Staging::Place::~Place() {
  if (!directory.empty() && !isNeeded) RemoveStaging(directory.c_str());
  if (lock >= 0) close(lock);
}

void Staging::Flush() const {
  for (const fs::path& file : ListFolder(Directory())) FlushToDisk(file);
}

std::vector<fs::path> Staging::MoveIntoPlace() {
  Flush();
  std::vector<Move> moves;
  for (const fs::path& file : ListFolder(Directory()))
    if (file.filename() != stagedName_) moves.push_back({file, DirectoryOf(target_) / file.filename(), {}});
  std::sort(moves.begin(), moves.end(), [](const Move& a, const Move& b) { return a.to < b.to; });
  moves.push_back({File(), target_, {}});
  std::vector<fs::path> files;
  for (const Move& move : moves) files.push_back(move.to);
  const auto unchanged = [&](const Move& move) { return move.to != target_ && HaveSameBytes(move.from, move.to); };
  moves.erase(std::remove_if(moves.begin(), moves.end(), unchanged), moves.end());

  FlushToDisk(Directory());
  if (moves.size() > 1) KeepOldFiles(moves, place_.directory);
  {
    const readers::InterruptPause pause;
    for (std::size_t place = 0; place < moves.size(); ++place) {
      std::error_code error;
      fs::rename(moves[place].from, moves[place].to, error);
      if (!error) continue;
      if (PutBack(moves, place)) ThrowOf(moves[place], error);
      removal_.reset();
      place_.isNeeded = true;
      ThrowOf(moves[place], error, "; the next run puts back what is in " + place_.directory + "/old");
    }
  }
  FlushToDisk(DirectoryOf(target_));
  return files;
}

}  // namespace tool
