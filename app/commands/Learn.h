#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/commands/DataOptions.h"
#include "app/data/ColumnKinds.h"

namespace app {

/// What `accredit learn` is asked to do.
struct LearnOptions {
    std::vector<std::string> dataPaths;  ///< One or more; "-" is standard input.
    TableOptions table;                  ///< In the place of files.
    std::string outputPath;              ///< "-" is standard output.
    /// A stored reference with whose bins the data is summarised; empty for bins of its own.
    std::string binsOfPath;
    DataOptions data;
};

/// What was learned of data.
struct Learned {
    MADocuments::Reference reference;
    std::string name;  ///< Of the data, fit to be shown.
    std::size_t fileCount = 1;
    std::string separatedBy;  ///< In words; empty for several files.
    bool isMerged = false;    ///< Whether it was made of summaries,
    bool isTable = false;     ///< or of a table.
    SettledColumns data;      ///< Of a reference, in the order of its list; else none.
    /// What a person should know of the documents and of the files as such; each begins with a
    /// file's name.
    std::vector<std::string> documentRemarks;
    /// Of new data, for each slot the file of the first unreadable cell, fit to be shown.
    std::vector<std::string> unreadableFiles;
};

/// The reference that is learned from the files, see LearnReference; or their summary with the bins
/// of another, see SummariseLike; of a table, LearnTable and SummariseTable. `log` takes the
/// queries to an engine where they are to be shown. Throws UsageError, InputError, OutputError,
/// Cancelled.
Learned Learn(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel,
              std::ostream* log = nullptr);

/// The document of what was learned. Throws InputError for what a document cannot hold, with the
/// column.
std::string DocumentOf(const Learned& learned);

}  // namespace app
