#pragma once

#include <string>

/// @file
/// What a document says of the application that wrote it.

/// What the header of a document says about the application that had it written. The strings are
/// UTF-8; an empty one is not given.
struct MCApplicInfo4XML {
    /// The application's name. Without it the version is not written either.
    std::string name;
    /// The application's version.
    std::string version;
    /// When the document was made, in any form; the PMML standard likes
    /// "2024-01-31 12:00:00 GMT +00:00".
    std::string timestamp;
};
