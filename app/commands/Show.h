#pragma once

#include <string>

#include "accredit/documents/Reference.h"

namespace app {

/// What `accredit show` is asked to do.
struct ShowOptions {
    std::string referencePath;  ///< "-" is standard input.
    bool json = false;
};

/// The library's listing of a reference, under this title, for reading: bytes that do not belong on
/// a terminal are escaped.
std::string TextListing(const MADocuments::Reference& reference, const std::string& title);

/// All of a reference as a JSON document, whose numbers have the digits that give the same double
/// back.
std::string JsonListing(const MADocuments::Reference& reference);

}  // namespace app
