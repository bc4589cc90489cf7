// SPDX-License-Identifier: MIT
//
// Finds the wide library, once, in the constructor of this one: there is no other thread then that
// waits for it, no signal handler from which a library must not be loaded, and the folder's name is
// still good where the loader was given a relative one. Calls before that have no wide steps.
#include "core/wide_walk.h"

#include <cpuid.h>
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>

#include <wide_identity.h>  // made by the build: LUX_WIDE_IDENTITY

static const WideLibrary none = {};
static const WideLibrary* taken_in = &none;

const WideLibrary& wide_library() { return *__atomic_load_n(&taken_in, __ATOMIC_ACQUIRE); }

// What can be seen without an instruction of a later processor. Whether the system keeps the long
// registers is asked by the wide library.
static bool processor_may_have_it() {
  constexpr uint32_t kFma = 1 << 12, kOsXsave = 1 << 27, kAvx = 1 << 28, kAvx2 = 1 << 5;
  uint32_t a, b, c, d;
  if (!__get_cpuid(1, &a, &b, &c, &d)) return false;
  if (~c & (kFma | kOsXsave | kAvx)) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & kAvx2);
}

// Beside this library. A program that runs with rights that its caller lacks takes no relative name.
static bool find_file(char* path, size_t size) {
  static const char kName[] = LUX_WIDE_LIBRARY_NAME "." LUX_RELEASE;
  Dl_info own;
  if (!dladdr(&none, &own) || !own.dli_fname) return false;
  const char* const slash = strrchr(own.dli_fname, '/');
  if (!slash || (own.dli_fname[0] != '/' && getauxval(AT_SECURE))) return false;
  const size_t folder = size_t(slash + 1 - own.dli_fname);
  if (folder + sizeof kName > size) return false;
  memcpy(path, own.dli_fname, folder);
  memcpy(path + folder, kName, sizeof kName);
  return true;
}

// What the environment says, where it may.
static int32_t wished_length() {
  const char* const wish = secure_getenv("LUXVM_WIDE");
  char* end = nullptr;
  const unsigned long length = wish ? strtoul(wish, &end, 10) : 0;
  if (!wish || end == wish || *end || length > INT32_MAX) return kLeastWideLength;
  return length == 0 ? kNeverWide : length < kLeastWideBlock ? kLeastWideBlock : int32_t(length);
}

__attribute__((constructor)) static void find_wide_library() {
  const int32_t least_length = wished_length();
  char path[4096];
  if (least_length == kNeverWide || !processor_may_have_it() || !find_file(path, sizeof path))
    return;
  void* const handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    dlerror();  // which is not the program's
    return;
  }
  WideLibrary* const library = static_cast<WideLibrary*>(dlsym(handle, "luxvmk3_wide"));
  if (!library || strcmp(library->head.identity, LUX_WIDE_IDENTITY) != 0 ||
      library->head.missing()) {
    dlclose(handle);
    return;
  }
  library->head.least_length = least_length;
  __atomic_store_n(&taken_in, library, __ATOMIC_RELEASE);
}
