#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "accredit/host/MCUniStats.h"
#include "accredit/host/XMLElement.h"

namespace MCDetail {

/// An element while no parent owns it; null stands for a failed step.
using ElementPtr = std::unique_ptr<MCXML_NAMESPACE::XMLElement>;

inline ElementPtr NewElement(const std::string& name) {
    return ElementPtr(MCXML_NAMESPACE::XMLElement::Create(name));
}

inline void Adopt(MCXML_NAMESPACE::XMLElement& parent, ElementPtr child) {
    parent.AddElement(child.release());
}

/// An extension; see MCPMMLExporter::ExportExtension.
ElementPtr MakeExtension(const std::string& name, const std::string& value);

/// A category value as a token of a string array, or nothing if such an array cannot hold it.
std::optional<std::string> ArrayToken(const std::string& value);

/// Whether a document can hold the four summary values: each is finite, or missing.
bool SummaryIsGood(const MCMTD_NAMESPACE::MCUniStats& stats);

/// Whether it can hold the margins: finite, strictly ascending but for a missing one at either end,
/// and one more than there are bins, or none without bins. Those of a categorical variable are not
/// written.
bool MarginsAreGood(const MCMTD_NAMESPACE::MCUniStats& stats);

/// Whether it can hold the frequencies: all are finite.
bool FrequenciesAreGood(const MCMTD_NAMESPACE::MCUniStats& stats);

/// UnivariateStats, or null; see MCPMMLExporter::ExportUniStats. `valueCount` is the number of the
/// field's values and `valueArray` the text of their array, null if there is none.
ElementPtr MakeUnivariateStats(const MCMTD_NAMESPACE::MCUniStats& stats, std::size_t valueCount,
                               const std::string* valueArray);

}  // namespace MCDetail
