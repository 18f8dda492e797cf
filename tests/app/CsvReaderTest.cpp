#include "app/data/CsvReader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Accredit.h"
#include "app/base/Errors.h"
#include "fakes/Fakes.h"

namespace {

// All that a reader gives: the heading and the rows of a file as "[a][b] [1][2]", or the complaint.
std::string ReadAll(app::CsvReader& reader) {
    std::string rows;
    try {
        for (const std::string& heading : reader.Headings()) rows += '[' + heading + ']';
        while (reader.Next()) {
            rows += ' ';
            for (const std::string_view field : reader.Fields()) {
                (rows += '[').append(field) += ']';
            }
        }
    } catch (const app::InputError& error) {
        return error.what();
    }
    return rows;
}

TABLE_TEST(CsvReader, SplitsRowsAsRfc4180SaysOrRefuses, 2) {
    const fakes::Files files(row.Text(0), "");
    app::Progress progress(nullptr);
    fakes::Query query;
    const std::string expected = fakes::Repeated(row.Text(1));
    try {
        app::CsvReader reader({"A"}, app::Reading::Repeated, {}, {}, progress, query);
        EXPECT_EQ(ReadAll(reader), expected);
        reader.Rewind();
        EXPECT_EQ(ReadAll(reader), expected) << "in the second pass";
    } catch (const app::InputError& error) {
        EXPECT_EQ(error.what(), expected);
    }
}

}  // namespace
