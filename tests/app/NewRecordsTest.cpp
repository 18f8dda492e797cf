#include "accredit/documents/NewRecords.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Accredit.h"
#include "accredit/documents/NumberText.h"
#include "accredit/host/MAStatus.h"
#include "fakes/Summaries.h"

namespace {

using MADocuments::NewRecords;
using MADocuments::ReadReference;
using MADocuments::RecordValue;
using MADocuments::Reference;

using Cells = std::vector<std::string>;

std::string Line(const Cells& cells) {
    std::string line;
    for (const std::string& cell : cells) {
        line += line.empty() ? "\"" : ",\"";
        for (const char byte : cell) line.append(byte == '"' ? 2 : 1, byte);
        line += '"';
    }
    return line + '\n';
}

std::vector<Cells> Draw(std::mt19937& random, const std::vector<Cells>& pools, std::size_t rows) {
    std::vector<Cells> drawn(rows);
    for (Cells& row : drawn) {
        for (const Cells& pool : pools) row.push_back(pool[random() % pool.size()]);
    }
    return drawn;
}

// What the service would have that reads the cells itself: numbers, and nothing.
RecordValue Typed(const std::string& cell, bool isText, std::mt19937& random) {
    const auto number = MADocuments::ParseNumber(MADocuments::TrimBlanks(cell));
    if (number && !isText) return *number;
    if (cell.empty()) {
        return std::vector<RecordValue>{{},
                                        nullptr,
                                        std::nan(""),
                                        fakes::kMissing,
                                        std::numeric_limits<float>::quiet_NaN()}[random() % 5];
    }
    if (cell == "1e999" && !isText) return -std::numeric_limits<double>::infinity();
    if (cell == "7" || cell == "2.5") return *number;
    return cell;
}

// The document of a summary without what only a file has.
std::string DocumentOf(Reference summary) {
    summary.application = {};
    summary.sources.clear();
    for (auto& data : summary.uncounted) {
        data.firstUnreadableLine = 0;
        data.firstUnreadableText.clear();
    }
    return MADocuments::WriteReference(summary);
}

TEST(NewRecords, GiveWhatTheProgramMakesOfTheSameRows) {
    const Cells numbers = {"1", "2", "3.25", "-0", "1e3", "7", "2.5"};
    const Cells texts = {"a", "b", " a", "7", "\xC3\xA9", "a,\"b\"\n", "2.5", "a "};
    const Cells odd = {"",  "NA", " NaN ", "?",    "\t?", "1e999", "-inf",
                       "x", "1,", "0x10",  " 7\t", ".5",  "+2.5",  "1e-400"};
    std::mt19937 random(31);
    for (int trial = 0; trial < 120; ++trial) {
        const fakes::Folder folder;
        Cells headings;
        std::vector<Cells> learned;
        std::string options = "--missing ?";
        for (std::size_t i = 0; i <= random() % 5; ++i) {
            headings.push_back("c" + std::to_string(i));
            learned.push_back(random() % 2 == 0 ? texts : numbers);
            const auto chance = random() % 6;
            if (chance < 2) options += " --categorical " + headings.back();
            if (chance == 2 && i > 0) options += " --ignore " + headings.back();
        }
        std::vector<Cells> pools = learned;
        for (Cells& pool : pools) {
            pool.insert(pool.end(), odd.begin(), odd.end());
            pool.insert(pool.end(), {"z", "99", "1", "a"});
        }
        std::string a = Line(headings);
        std::string b = a;
        for (const Cells& row : Draw(random, learned, 40)) a += Line(row);
        const std::vector<Cells> rows = Draw(random, pools, 1 + random() % 60);
        for (const Cells& row : rows) b += Line(row);
        fakes::WriteFile("A", a);
        fakes::WriteFile("B", b);
        ASSERT_EQ(
            fakes::Run("learn A --output R " + options + "; learn --bins-of R B --output N").status,
            0);

        const Reference reference = ReadReference(fakes::ReadFile("R"));
        const auto& list = reference.stats.GetVarList();
        NewRecords pushed(reference);
        NewRecords typed(reference);
        EXPECT_TRUE(typed.Add(std::vector<RecordValue>(list.Size(), "99")).IsOK());
        typed.Clear();
        for (const Cells& row : rows) {
            std::vector<RecordValue> values;
            std::vector<RecordValue> typedValues;
            for (unsigned int i = 0; i < list.Size(); ++i) {
                const auto at = static_cast<std::size_t>(
                    std::stoul(list.GetVarAt(static_cast<int>(i))->GetName().substr(1)));
                const auto& encoder = *list.GetEncoderAt(static_cast<int>(i));
                const bool isText = encoder.GetNumCategories() > 0 &&
                                    encoder.GetValueType() == encoder.ValueTypeString;
                values.emplace_back(row[at]);
                typedValues.push_back(Typed(row[at], isText, random));
            }
            EXPECT_TRUE(pushed.Add(values).IsOK() && typed.Add(typedValues).IsOK());
            values.pop_back();
            EXPECT_EQ(pushed.Add(values).GetCode(), MAStatusRecordSize);
            if (random() % 16 == 0) pushed.Summary();
        }
        EXPECT_EQ(pushed.RecordCount(), rows.size());
        const std::string wanted = DocumentOf(ReadReference(fakes::ReadFile("N")));
        EXPECT_EQ(DocumentOf(pushed.Summary()), wanted) << trial << ": " << options;
        EXPECT_EQ(DocumentOf(typed.Summary()), wanted) << trial << ": " << options;
    }
}

}  // namespace
