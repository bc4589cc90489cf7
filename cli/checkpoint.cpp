// SPDX-License-Identifier: MIT
#include "cli/checkpoint.h"

#include "luxvmk3.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

static uint64_t fnv1a(const std::string& text) {
  uint64_t hash = 0xCBF29CE484222325u;
  for (const unsigned char c : text) hash = (hash ^ c) * 0x100000001B3u;
  return hash;
}

static std::filesystem::path state_folder() {
  const char* const state = getenv("XDG_STATE_HOME");
  if (state && *state) return std::filesystem::path(state) / "luxvm";
  const char* const home = getenv("HOME");
  return std::filesystem::path(home && *home ? home : "/tmp") / ".local/state/luxvm";
}

static bool read_whole(const std::string& path, std::string& text) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  text.assign(std::istreambuf_iterator<char>(file), {});
  return true;
}

void write_whole(const std::string& path, const std::string& text) {
  const std::string partial = path + ".partial";
  std::ofstream file(partial, std::ios::binary);
  file << text;
  file.close();
  if (!file || rename(partial.c_str(), path.c_str()) != 0) {
    const std::string reason = strerror(errno);
    std::remove(partial.c_str());
    throw Failure(fmt::format("cannot write {}: {}", path, reason));
  }
}

Checkpoint::Checkpoint(const std::string& run, bool fresh)
    : content(Json::object()),
      path_(state_folder() / fmt::format("{:016x}.json", fnv1a(run + '\n' + library_digest()))) {
  std::error_code ignored;
  std::filesystem::create_directories(state_folder(), ignored);  // saving says what is wrong
  std::string text;
  if (fresh || !read_whole(path_, text)) return;
  Json earlier = Json::parse(text, nullptr, false);
  if (!earlier.is_object()) return;
  content = std::move(earlier);
  resumed_ = true;
}

void Checkpoint::save() const { write_whole(path_, content.dump()); }
void Checkpoint::remove() const { std::remove(path_.c_str()); }

std::atomic<bool> Interrupt::requested{false};

static void request(int signal_number) {
  Interrupt::requested = true;
  signal(signal_number, SIG_DFL);
}

Interrupt::Interrupt() {
  signal(SIGINT, request);
  signal(SIGTERM, request);
}

Interrupt::~Interrupt() {
  signal(SIGINT, SIG_DFL);
  signal(SIGTERM, SIG_DFL);
}

std::string library_path() {
  Dl_info info;
  if (!dladdr(reinterpret_cast<const void*>(&luxsInv_32f_A24), &info) || !info.dli_fname)
    throw Failure("cannot find the file of the loaded library");
  std::error_code failed;
  const auto path = std::filesystem::canonical(info.dli_fname, failed);
  return failed ? info.dli_fname : path.string();
}

std::string library_digest() {
  std::string bytes;
  if (!read_whole(library_path(), bytes))
    throw Failure(fmt::format("cannot read {}", library_path()));
  return fmt::format("{:016x}", fnv1a(bytes));
}
