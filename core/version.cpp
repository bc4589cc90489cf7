// SPDX-License-Identifier: MIT
#include "luxvmk3.h"

static const LibraryVersion version = {
    5, 2, 108, 348, {'k', '3', 0, 0}, "libluxvmk3.so.5.2", "5.2", __DATE__};

const LibraryVersion* luxvmGetLibVersion(void) { return &version; }
