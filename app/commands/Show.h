#pragma once

#include <string>

#include "accredit/documents/Reference.h"

namespace app {

/// What `accredit show` is asked to do.
struct ShowOptions {
    std::string referencePath;  ///< "-" is standard input.
    bool json = false;
};

/// A listing of a reference, under this title, for reading: the statistics and bins of numbers, the
/// most frequent categories by name, missing data. Bytes that do not belong on a terminal are
/// escaped.
std::string TextListing(const MADocuments::Reference& reference, const std::string& title);

/// All of a reference as a JSON document, whose numbers have the digits that give the same double
/// back.
std::string JsonListing(const MADocuments::Reference& reference);

}  // namespace app
