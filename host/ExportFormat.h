#pragma once

#include "accredit/host/AccreditExport.h"

/// @file
/// How an element is written as text.

/// Trees of XML elements.
namespace MCXML_NAMESPACE {

/// How an XMLElement is written.
class ACCREDIT_EXPORT ExportFormat {
public:
    /// Blanks before an element for each level of its depth. With a negative number the document is
    /// written without line ends between elements.
    int indent = 2;

    /// Whether the XML declaration stands before an element that is written at level 0.
    bool declaration = true;
};

}  // namespace MCXML_NAMESPACE
