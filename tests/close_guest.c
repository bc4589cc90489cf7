/* SPDX-License-Identifier: MIT
 *
 * A program that opens the library, lets it start threads, and closes it: close_guest <library>.
 * The runtime's threads are left waiting, and must find their code when they wake up.
 */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

typedef int32_t (*Inv)(const float*, float*, int32_t);
typedef int32_t (*Splitter)(Inv, int32_t, const float*, float*, int32_t);

int main(int argc, char** argv) {
  static float src[4000], dst[4000];
  for (int i = 0; i < 4000; ++i) src[i] = 2;
  for (int round = 0; round < 3 && argc == 2; ++round) {
    void* const library = dlopen(argv[1], RTLD_NOW);
    if (!library) return fprintf(stderr, "%s\n", dlerror()), 1;
    int32_t* const threads = (int32_t*)dlsym(library, "threads_omp_of_n_lux");
    const Splitter splitter = (Splitter)dlsym(library, "noxsThreading_1_1");
    const Inv inv = (Inv)dlsym(library, "luxsInv_32f_A24");
    *threads = 4;
    if (splitter(inv, 4, src, dst, 4000) != 0 || dst[3999] != 0.5f) return 1;
    dlclose(library);
    usleep(20000);
  }
  return argc != 2;
}
