// SPDX-License-Identifier: MIT
//
// A piece that a record must have, or the build fails with the message.
#ifndef LUX_CATALOG_REQUIRE_H
#define LUX_CATALOG_REQUIRE_H

// With the sanitizers' checks no pointer is a constant, so their build leaves this to the others.
#ifdef __SANITIZE_ADDRESS__
#define LUX_REQUIRE(condition, message) static_assert(true)
#else
#define LUX_REQUIRE(condition, message) static_assert(condition, message)
#endif

#endif
