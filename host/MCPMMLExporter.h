#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCApplicInfo4XML.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCUniStats.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/XMLElement.h"

/// @file
/// Writing statistics as a PMML document.

/// Makes the elements of one PMML 3.1 document. A caller that puts them together in the order of
/// the operations below gets a document that is valid and that holds everything it was given.
///
/// An element goes to the caller, who owns it, through the last argument; it must be null before
/// the call. What a document cannot hold makes a step fail, with MAStatusExportFailed, and the last
/// argument then stays null (MAFindExportProblem finds the variable): texts that XML cannot hold
/// (see XMLElement), and infinities and NaN, which would be lost or would not be valid. An exporter
/// is used by one thread at a time.
class ACCREDIT_EXPORT MCPMMLExporter {
public:
    /// How many categories the fields of one document have together, at most.
    static constexpr int kMaxCategories = 4'000'000;

    /// The query may be null. The steps are short and do not ask it.
    explicit MCPMMLExporter(MCQueryCancel* queryCancel);
    ~MCPMMLExporter();

    /// The empty root element with version, namespace and schema location; the caller owns it.
    /// Never null.
    MCXML_NAMESPACE::XMLElement* ExportPMMLElement() const;

    /// The header with the legal notice. `description` is left out if it is empty. With
    /// `withApplication`, the application, its version and the timestamp are taken from `info`,
    /// which may be null.
    MCCommon::MCStatus ExportHeader(const MCApplicInfo4XML* info, const std::string& description,
                                    bool withApplication, MCXML_NAMESPACE::XMLElement*& element);

    /// The texts that stand for missing data, in UTF-8, none by default: ExportDataDictionary
    /// writes them into every field, behind its values. One that is given twice is written once.
    void SetMissingValues(const std::vector<std::string>& texts);

    /// The data dictionary of the variables whose positions in the list are among `listIndexes`,
    /// in list order; positions that do not exist are passed over. A categorical variable's field
    /// has the values of its encoder, in code order; its type is double or string after theirs.
    /// Fails also if no variable is left, if two have the same name, if a field would have a value
    /// twice, missing values included, or if the encoders together claim more than kMaxCategories;
    /// no encoder is then asked for a category.
    MCCommon::MCStatus ExportDataDictionary(const MCMTD_NAMESPACE::MCVarList& varList,
                                            const std::vector<int>& listIndexes,
                                            MCXML_NAMESPACE::XMLElement*& element);

    /// An extension of this name. An empty value is left out, and so is a string that XML cannot
    /// hold: `element` is never null afterwards.
    void ExportExtension(const std::string& name, const std::string& value,
                         MCXML_NAMESPACE::XMLElement*& element);

    /// The statistics of one variable as UnivariateStats.
    ///
    /// The frequencies of a variable of the data dictionary come in the order of its field's
    /// values; where there are fewer of them than values, zeros follow. The values themselves
    /// stand beside them if a PMML array can hold them. Frequencies that do not sum to the number
    /// of cases, which PMML does not allow for, go into an extension named "frequencies" of the
    /// element that would otherwise hold them. The total count is that of the cases and, where
    /// they are known, of the missing and the invalid data, which then also stand by themselves.
    ///
    /// Fails also if the number of cases, of missing or of invalid data is not a whole number from
    /// 0 up, if their sum, rounded to a double, does not give the cases back, or if margins and
    /// frequencies do not fit together: see MCUniStats.
    MCCommon::MCStatus ExportUniStats(const MCMTD_NAMESPACE::MCUniStats& stats,
                                      MCXML_NAMESPACE::XMLElement*& element);

private:
    // What a field of the data dictionary has to say to its statistics.
    struct Categories {
        std::size_t count = 0;
        std::optional<std::string> array;
    };

    std::unique_ptr<MCXML_NAMESPACE::XMLElement> MakeDataField(
        const MCMTD_NAMESPACE::MCVarList& varList, int listIndex);
    bool AddCategories(const MCMTD_NAMESPACE::IMCEncoder& encoder,
                       MCXML_NAMESPACE::XMLElement& field, Categories& categories);

    std::vector<std::string> mMissingValues;
    std::map<std::string, Categories> mCategories;
};
