// SPDX-License-Identifier: MIT
//
// The threshold of a function is fixed by its first call, and what crashes must not take the other
// figures along: so a child measures and sends lines of JSON.
#ifndef LUX_CLI_BENCH_CHILD_H
#define LUX_CLI_BENCH_CHILD_H

#include "catalog/lookup.h"
#include "cli/cli.h"

#include <functional>

using SendLine = std::function<void(const Json& line)>;

// `work` runs in a process of its own; `take` gets here what it sends.
void run_in_child(const Function& function, const std::function<void(const SendLine& send)>& work,
                  const std::function<void(const Json& line)>& take);

#endif
