// A scoring service's loop: it loads a stored reference at its start, folds the values of every
// request into a summary, and says after every so many requests what has changed.
//
// service REFERENCE.pmml REQUESTS < data.csv
//
// Here a request is a line of comma-separated values, and the first line names them. `accredit
// learn` makes the reference.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "accredit/documents/Comparison.h"
#include "accredit/documents/NewRecords.h"
#include "accredit/documents/Reference.h"

using MADocuments::NewRecords;
using MADocuments::RecordValue;
using MADocuments::Reference;

namespace {

std::string TextOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) throw std::runtime_error("cannot be read");
    return text;
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    return fields;
}

const char* VerdictText(MAVerdict verdict) {
    switch (verdict) {
        case MAVerdict::Unchanged:
            return "unchanged";
        case MAVerdict::Minor:
            return "minor";
        case MAVerdict::Moderate:
            return "moderate";
        case MAVerdict::Major:
            return "major";
        case MAVerdict::NotTested:
            break;
    }
    return "not tested";
}

// What is worth an alarm: how large the change is, and which categories the model does not know.
void Report(const Reference& reference, const Reference& recent, std::size_t requests) {
    std::cout << "request " << requests << ":\n";
    const auto variables = MADocuments::Compare(reference, recent);
    for (unsigned int slot = 0; slot < variables.size(); ++slot) {
        const MAVariableComparison& variable = variables[slot];
        if (variable.verdict < MAVerdict::Moderate) continue;
        std::cout << "  " << MADocuments::VariableName(reference.stats, slot) << ": "
                  << VerdictText(variable.verdict);
        if (variable.values.shareMoved) {
            std::cout << ", share moved " << *variable.values.shareMoved;
        }
        if (variable.missing.newShare) std::cout << ", missing " << *variable.missing.newShare;
        for (const auto& category : MADocuments::UnknownCategories(reference, recent, slot)) {
            std::cout << ", unknown \"" << (category.isNamed ? category.text : "others") << '"';
        }
        std::cout << '\n';
    }
    std::cout << std::flush;
}

// Where the values of a request stand in a record, -1 for what the reference does not know.
std::vector<int> Places(const Reference& reference, const std::vector<std::string>& names) {
    const auto& list = reference.stats.GetVarList();
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        const std::string name = MADocuments::VariableName(reference.stats, slot);
        if (std::find(names.begin(), names.end(), name) != names.end()) continue;
        // All its values would count as missing.
        throw std::runtime_error("the requests have no \"" + name + '"');
    }
    std::vector<int> places;
    for (const std::string& name : names) places.push_back(list.FindVariable(name));
    return places;
}

void Serve(const Reference& reference, std::size_t interval) {
    std::string line;
    std::getline(std::cin, line);
    const std::vector<int> places = Places(reference, Fields(line));
    NewRecords recent(reference);
    for (std::size_t requests = 1; std::getline(std::cin, line); ++requests) {
        const std::vector<std::string> fields = Fields(line);
        std::vector<RecordValue> record(reference.stats.GetVarList().Size());
        for (std::size_t i = 0; i < std::min(places.size(), fields.size()); ++i) {
            if (places[i] >= 0) record[static_cast<std::size_t>(places[i])] = fields[i];
        }
        recent.Add(record);  // one value for each variable of the list, so it cannot fail

        // This is where the model would score the request.

        if (requests % interval != 0) continue;
        Report(reference, recent.Summary(), requests);
        recent.Clear();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const long interval = argc == 3 ? std::atol(argv[2]) : 0;
    if (interval < 1) {
        std::cerr << "usage: service REFERENCE.pmml REQUESTS < data.csv\n";
        return 2;
    }
    try {
        const Reference reference = MADocuments::ReadReference(TextOf(argv[1]));
        Serve(reference, static_cast<std::size_t>(interval));
    } catch (const std::exception& error) {
        // Of a document that is no reference the text says line, column and what to do.
        std::cerr << argv[1] << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}
