// SPDX-License-Identifier: MIT
#include "catalog/paths.h"

#include "catalog/failure.h"
#include "catalog/lookup.h"
#include "core/wide_head.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace bench {
namespace {

// Beside the main library.
std::string file_of_wide_library() {
  Dl_info info;
  if (!dladdr(reinterpret_cast<const void*>(luxvmGetLibVersion), &info)) return "";
  const std::string main = info.dli_fname;
  return fmt::format("{}" LUX_WIDE_LIBRARY_NAME ".{}", main.substr(0, main.rfind('/') + 1),
                     luxvmGetLibVersion()->version);
}

bool switched_off() {
  const char* const wish = secure_getenv("LUXVM_WIDE");
  return wish && *wish && wish[strspn(wish, "0")] == 0;
}

struct Loaded {
  WidePath path;
  WideHead* head = nullptr;
};

// The main library says nothing; what it did is seen in the wide one, and why in what it looks at.
Loaded look() {
  Loaded found;
  WidePath& path = found.path;
  path.file = file_of_wide_library();
  void* const handle = dlopen(path.file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle) found.head = static_cast<WideHead*>(dlsym(handle, "luxvmk3_wide"));
  path.taken = found.head && found.head->least_length != kNeverWide;
  if (path.taken) path.least_length = found.head->least_length;
  if (path.taken) return found;
  const char* const missing = found.head ? found.head->missing() : nullptr;
  if (switched_off())
    path.why = "LUXVM_WIDE is 0";
  else if (access(path.file.c_str(), F_OK) != 0)
    path.why = "there is no wide library";
  else if (missing)
    path.why = missing;
  else
    path.why =
        found.head ? "the wide library is of another build" : "the wide library cannot be loaded";
  return found;
}

const Loaded& loaded() {
  static const Loaded found = look();
  return found;
}

}  // namespace

const WidePath& wide_path() { return loaded().path; }

bool has_wide_step(const Function& function) {
  const std::string name = std::string(function.name) + " ";
  return wide_path().taken && strstr(loaded().head->exports, name.c_str());
}

std::vector<const Function*> functions_with_own_step() {
  std::vector<const Function*> functions;
#define LUX_WIDE_STEP(step, type, export) functions.push_back(&find_function(#export));
#include "core/wide.def"
  return functions;
}

void take_path(Path path) {
  if (wide_path().taken)
    set_least_wide_length(path == Path::wide ? wide_path().least_length : kNeverWide);
  else if (path == Path::wide)
    throw Failure(fmt::format("there is no wide path: {}", wide_path().why));
}

void set_least_wide_length(int32_t length) {
  __atomic_store_n(&loaded().head->least_length, length, __ATOMIC_SEQ_CST);
}

}  // namespace bench
