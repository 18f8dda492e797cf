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

#include "accredit/documents/Merge.h"
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

void Report(const Reference& reference, const Reference& recent, std::size_t from, std::size_t to) {
    std::cout << "requests " << from << " to " << to << ':';
    bool isUnchanged = true;
    const auto variables = MADocuments::Compare(reference, recent);
    for (unsigned int slot = 0; slot < variables.size(); ++slot) {
        if (variables[slot].verdict < MAVerdict::Moderate) continue;
        std::cout << (isUnchanged ? " " : ", ") << MADocuments::VariableName(reference.stats, slot)
                  << (variables[slot].verdict == MAVerdict::Major      ? " major"
                      : variables[slot].verdict == MAVerdict::Moderate ? " moderate"
                                                                       : " not tested");
        isUnchanged = false;
    }
    std::cout << (isUnchanged ? " unchanged" : "") << std::endl;
}

void Serve(const Reference& reference, std::size_t interval) {
    // Where the values of a request stand in a record; what the reference does not know is left
    // out.
    const auto& list = reference.stats.GetVarList();
    std::string line;
    std::getline(std::cin, line);
    std::vector<int> places;
    for (const std::string& name : Fields(line)) places.push_back(list.FindVariable(name));

    NewRecords recent(reference);
    std::size_t requests = 0;
    while (std::getline(std::cin, line)) {
        const std::vector<std::string> fields = Fields(line);
        std::vector<RecordValue> record(list.Size());
        for (std::size_t i = 0; i < std::min(places.size(), fields.size()); ++i) {
            if (places[i] >= 0) record[static_cast<std::size_t>(places[i])] = fields[i];
        }
        recent.Add(record);  // has one value for each variable, and so cannot fail

        // This is where the model would score the request.

        if (++requests % interval != 0) continue;
        Report(reference, recent.Summary(), requests - interval + 1, requests);
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
