/* SPDX-License-Identifier: MIT
 *
 * libluxcore: the settings that the libraries of the product share.
 */
#ifndef LUXCORE_H
#define LUXCORE_H

#include <stdint.h>

#if defined(__GNUC__)
#define LUXCORE_API __attribute__((visibility("default")))
#else
#define LUXCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum {
  LUXCORE_OK = 0,
  LUXCORE_BAD_COUNT = -1 /**< a thread count below 1; the setting is unchanged */
};

/** Number of threads that a vector function may use. Starts, before main, at the positive number in
 *  the environment variable LUXVM_NUM_THREADS, else at the first one in OMP_NUM_THREADS, else at
 *  the number of processors available to the process. A function fixes the length from which it
 *  threads at its first call, so set this before the first call of the functions that it is meant
 *  for. */
extern LUXCORE_API int32_t threads_omp_of_n_lux;

/** Set the number of threads; any value from 1 up. Returns LUXCORE_OK or LUXCORE_BAD_COUNT. */
LUXCORE_API int32_t luxcoreSetNumThreads(int32_t threads);

/** The number of threads in force. */
LUXCORE_API int32_t luxcoreGetNumThreads(void);

/** Who decided that number: "LUXVM_NUM_THREADS", "OMP_NUM_THREADS", "processors", or "program" once
 *  it is another than at the start. A static text. */
LUXCORE_API const char* luxcoreThreadSource(void);

#ifdef __cplusplus
}
#endif

#endif
