// SPDX-License-Identifier: MIT
//
// The numbers come from the project's version, LUX_VERSION_NUMBERS and LUX_RELEASE. For __DATE__ the
// compiler takes SOURCE_DATE_EPOCH, where that is set, so that a build can be repeated bit for bit.
#include "luxvmk3.h"

static const LibraryVersion version = {
    LUX_VERSION_NUMBERS, {'k', '3', 0, 0}, "libluxvmk3.so." LUX_RELEASE, LUX_RELEASE, __DATE__};

const LibraryVersion* luxvmGetLibVersion(void) { return &version; }
