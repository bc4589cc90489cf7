// SPDX-License-Identifier: MIT
#include "cli/checkpoint.h"
#include "cli/files.h"
#include "cli/json_file.h"

#include "luxvmk3.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

static uint64_t fnv1a(const std::string& text) {
  uint64_t hash = 0xCBF29CE484222325u;
  for (const unsigned char c : text) hash = (hash ^ c) * 0x100000001B3u;
  return hash;
}

// Empty when the environment names no place. A relative one would be another for each directory.
static std::filesystem::path state_folder() {
  const char* const state = getenv("XDG_STATE_HOME");
  if (state && *state == '/') return std::filesystem::path(state) / "luxvm";
  const char* const home = getenv("HOME");
  if (home && *home == '/') return std::filesystem::path(home) / ".local/state/luxvm";
  return {};
}

constexpr char kDigest[] = "digest";

static std::string digest_of(const std::string& text) {
  return fmt::format("{:016x}", fnv1a(text));
}

// Without the digest, which must be that of the rest.
static Json verified(Json kept) {
  const std::string digest = text_in(kept, kDigest);
  kept.erase(kDigest);
  if (digest != digest_of(kept.dump())) throw BadField("it is not as it was written");
  return kept;
}

Checkpoint::Checkpoint(const std::string& run, bool fresh)
    : content(Json::object()),
      path_(state_folder() / (digest_of(run + '\n' + library_digest()) + ".json")) {
  if (state_folder().empty()) {
    keep_nothing("neither XDG_STATE_HOME nor HOME is the path of a folder");
    return;
  }
  std::error_code ignored;
  std::filesystem::create_directories(state_folder(), ignored);  // the next line says what is wrong
  try {
    require_writable(path_);
  } catch (const Failure& failure) {
    keep_nothing(failure.what());
    return;
  }
  if (fresh || access(path_.c_str(), F_OK) != 0) return;
  try {
    content = verified(parse_json(read_file(path_)));
  } catch (const BadField& bad) {
    refuse(bad.what());
  }
  resumed_ = true;
}

void Checkpoint::refuse(const std::string& why) const {
  throw Failure(
      fmt::format("what was kept of an interrupted run in {} is damaged ({}); --fresh starts anew",
                  path_, why));
}

void Checkpoint::keep_nothing(const std::string& why) {
  path_.clear();
  say(fmt::format("an interrupted run will not go on from where it was: {}\n", why));
}

void Checkpoint::save() {
  if (path_.empty()) return;
  Json whole = content;
  whole[kDigest] = digest_of(content.dump());
  try {
    write_file(path_, whole.dump());
  } catch (const Failure& failure) {
    keep_nothing(failure.what());
  }
}

void Checkpoint::remove() const {
  if (!path_.empty()) std::remove(path_.c_str());
}

int Checkpoint::clear(std::string& folder) {
  folder = state_folder();
  if (folder.empty()) return 0;
  int removed = 0;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
    const std::string name = entry.path().filename();
    if (name.size() < 21 || name.find_first_not_of("0123456789abcdef") != 16 ||
        name.compare(16, 5, ".json") != 0)
      continue;
    std::error_code failed;
    if (!std::filesystem::remove(entry.path(), failed))
      throw Failure(fmt::format("cannot remove {}: {}", entry.path().string(), failed.message()));
    ++removed;
  }
  return removed;
}

std::atomic<bool> Interrupt::requested{false};
std::atomic<int> Interrupt::signal_number{0};

// What signals did before: they remove a file under way.
constexpr int kSignals[] = {SIGINT, SIGTERM};
static struct sigaction before[std::size(kSignals)];

static void request(int signal_number) {
  Interrupt::signal_number = signal_number;
  Interrupt::requested = true;
  sigaction(signal_number, &before[signal_number == SIGINT ? 0 : 1], nullptr);
}

// A signal that the starting shell has set aside, for a run in the background, stays so.
Interrupt::Interrupt() {
  sigset_t all, signals;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &signals);  // whoever sees a signal caught may rely on `request`
  watch_signals();
  for (size_t k = 0; k < std::size(kSignals); ++k)
    if (sigaction(kSignals[k], nullptr, &before[k]) == 0 && before[k].sa_handler != SIG_IGN)
      signal(kSignals[k], request);
  sigprocmask(SIG_SETMASK, &signals, nullptr);
}

Interrupt::~Interrupt() {
  for (size_t k = 0; k < std::size(kSignals); ++k) {
    struct sigaction current;
    if (sigaction(kSignals[k], nullptr, &current) == 0 && current.sa_handler == request)
      sigaction(kSignals[k], &before[k], nullptr);
  }
}

std::string library_path() {
  Dl_info info;
  if (!dladdr(reinterpret_cast<const void*>(&luxsInv_32f_A24), &info) || !info.dli_fname)
    throw Failure("cannot find the file of the loaded library");
  std::error_code failed;
  const auto path = std::filesystem::canonical(info.dli_fname, failed);
  return failed ? info.dli_fname : path.string();
}

std::string library_digest() { return digest_of(read_file(library_path())); }
