#pragma once

/// @file
/// The mark of what the shared library exports.

/// Marks what the library exports. The library is compiled with hidden visibility.
#if defined(__GNUC__)
#define ACCREDIT_EXPORT __attribute__((visibility("default")))
#else
#define ACCREDIT_EXPORT
#endif
