// SPDX-License-Identifier: MIT
//
// The thread count in force. Only the core library's variable is used: a program's own core library
// need not have more.
#ifndef LUX_CATALOG_THREAD_COUNT_H
#define LUX_CATALOG_THREAD_COUNT_H

#include <cstdint>

namespace bench {

int32_t thread_count();  // at least 1, which is what a value below it means
void set_thread_count(int32_t threads);

}  // namespace bench

#endif
