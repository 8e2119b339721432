#include "tool/staging.h"

#include "tool/output_error.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <stdlib.h>
#include <thread>
#include <unistd.h>

namespace tool {
namespace {

namespace fs = std::filesystem;

fs::path DirectoryOf(const fs::path& target) {
  return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

// Held while files are moved into place: a signal waits until all of them are.
std::mutex g_moving;

// Waits for a signal to end the command and removes the directory before it does. Removing a tree isn't allowed
// in a signal handler, so a thread of its own takes the signals.
void RemoveOnSignal(const fs::path& directory) {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals, directory] {
    int number = 0;
    sigwait(&signals, &number);
    const std::lock_guard<std::mutex> lock(g_moving);
    std::error_code ignored;
    fs::remove_all(directory, ignored);
    _exit(128 + number);
  }).detach();
}

struct Move {
  fs::path from, to;
  fs::path backup;  // the file that stood at `to`, empty for none
};

void PutBack(const std::vector<Move>& moves) {
  std::error_code ignored;
  for (const Move& move : moves) {
    if (move.backup.empty())
      fs::remove(move.to, ignored);
    else
      fs::rename(move.backup, move.to, ignored);
  }
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

Staging::Staging(const fs::path& target) : target_(target) {
  std::error_code error;
  if (fs::is_directory(target_, error)) throw OutputError(target_.string() + ": is a directory");
  const fs::path parent = DirectoryOf(target_);
  if (!fs::is_directory(parent, error))
    throw OutputError(target_.string() + ": there is no folder " + parent.string());
  std::string name = (parent / ".vornel-XXXXXX").string();
  if (!mkdtemp(name.data()))
    throw OutputError(target_.string() + ": can't write into " + parent.string() + ": " + std::strerror(errno));
  directory_ = fs::absolute(name);
  RemoveOnSignal(directory_);
  for (const char* folder : {"new", "old"}) {
    if (fs::create_directory(directory_ / folder, error)) continue;
    fs::remove_all(directory_);
    throw OutputError(target_.string() + ": can't write into " + parent.string() + ": " + error.message());
  }
}

Staging::~Staging() {
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

std::vector<fs::path> Staging::MoveIntoPlace() const {
  const std::lock_guard<std::mutex> lock(g_moving);
  std::vector<Move> moves;
  for (const fs::directory_entry& entry : fs::directory_iterator(Directory()))
    if (entry.path().filename() != target_.filename())
      moves.push_back({entry.path(), DirectoryOf(target_) / entry.path().filename(), {}});
  std::sort(moves.begin(), moves.end(), [](const Move& a, const Move& b) { return a.to < b.to; });
  moves.push_back({Directory() / target_.filename(), target_, {}});

  std::vector<Move> done;
  std::vector<fs::path> files;
  for (Move& move : moves) {
    files.push_back(move.to);
    if (move.to != target_ && HaveSameBytes(move.from, move.to)) continue;
    std::error_code error, none;
    const fs::path backup = directory_ / "old" / std::to_string(done.size());
    if (fs::exists(fs::symlink_status(move.to, none))) {
      // A second name keeps the old file reachable, so that the target is never missing.
      fs::create_hard_link(move.to, backup, error);
      if (error) fs::copy_file(move.to, backup, error);
      if (!error) move.backup = backup;
    }
    if (!error) fs::rename(move.from, move.to, error);
    if (error) {
      PutBack(done);
      throw OutputError(move.to.string() + ": can't be replaced: " + error.message());
    }
    done.push_back(move);
  }
  return files;
}

}  // namespace tool
