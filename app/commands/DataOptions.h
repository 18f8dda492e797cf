#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "app/data/ColumnKinds.h"
#include "app/data/CsvReader.h"
#include "app/sql/Connection.h"

namespace app {

/// What the user says about new data that is no file.
struct TableOptions {
    std::optional<SqlOptions> sql;         ///< A table that is asked over a connection.
    std::vector<std::string> answerPaths;  ///< What an engine's own client printed.

    bool IsGiven() const { return sql || !answerPaths.empty(); }
};

/// What the user says about data, for all files of a call.
struct DataOptions {
    CsvFormat format;
    /// Texts that stand for missing values besides the usual ones,
    std::vector<std::string> missing;
    /// or in their place.
    std::optional<std::vector<std::string>> onlyMissing;
    ColumnChoices columns;
    /// Those of the ignored columns that the command line names, which must be there.
    std::vector<std::string> ignoredByOption;
    /// Empty for none.
    std::string configPath;
    /// The first option of the command line that a stored reference has settled which names its
    /// missing tokens, and the first that any has settled; empty if there is none. What a
    /// configuration file says besides does not count against such a reference.
    std::string settledOption;
    std::string settledKind;

    MADocuments::MissingTokens Missing() const {
        return onlyMissing ? MADocuments::MissingTokens::Only(*onlyMissing)
                           : MADocuments::MissingTokens(missing);
    }
};

}  // namespace app
