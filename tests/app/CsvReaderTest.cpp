#include "app/data/CsvReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "TempFile.h"
#include "app/base/Errors.h"
#include "fakes/Fakes.h"

namespace {

using app::CsvReader;
using app::InputError;
using app::Reading;
using fakes::Query;
using fakes::TempFile;
using Row = std::vector<std::string>;

Row FieldsOf(const CsvReader& reader) { return {reader.Fields().begin(), reader.Fields().end()}; }

// The heading and the rows of a file as "[a][b] [1][2]", or the complaint, in which the file's name
// is F.
std::string Read(const std::string& content) {
    const TempFile file(content);
    app::Progress progress(nullptr);
    Query query;
    std::string rows;
    try {
        CsvReader reader(file.Path(), Reading::Once, progress, query);
        for (const std::string& heading : reader.Headings()) rows += '[' + heading + ']';
        while (reader.Next()) {
            rows += ' ';
            for (const std::string& field : FieldsOf(reader)) rows += '[' + field + ']';
        }
    } catch (const InputError& error) {
        return "F" + std::string(error.what()).substr(file.Path().size());
    }
    return rows;
}

TABLE_TEST(CsvReader, SplitsRowsAsRfc4180SaysOrRefuses, 2) {
    EXPECT_EQ(Read(row.Text(0)), row.Text(1));
}

TEST(CsvReader, RefusesRowsThatAreTooLong) {
    EXPECT_EQ(Read(std::string(1'000'000, ',')),
              "F:1: column 1000001: the row goes on, 1000000 columns are the most that are read");
    EXPECT_EQ(Read("a,b\n1,\"" + std::string(34'000'000, '\n')),
              "F:2: column 2 \"b\": the row is longer than 16 MiB; is a quote not closed?");
}

// Fields as a program writes them, some quoted without need, some much longer than a piece that is
// read at once; the line on which each row begins is counted on the way.
TEST(CsvReader, ReadsBackWhateverIsWritten) {
    std::mt19937 random(4180);
    const auto below = [&random](unsigned n) { return static_cast<unsigned>(random()) % n; };
    const std::string pieces[] = {"x", "\xC3\xA9", " ", ",", "\"", "\n", "\r", "\r\n"};
    const std::string lineEnds[] = {"\n", "\r\n", "\r"};
    std::vector<Row> rows;
    std::vector<int> lines;
    std::string content = "a,b,c\n";
    int line = 2;
    for (int r = 0; r < 5'000; ++r) {
        Row row;
        lines.push_back(line);
        for (int c = 0; c < 3; ++c) {
            const bool quoted = below(2) == 0;
            std::string field;
            std::string written;
            for (unsigned n = below(1000) == 0 ? 400'000 : below(6); n > 0; --n) {
                const std::string& piece = pieces[below(quoted ? 8 : 3)];
                // A CR and an LF that come to stand together by chance would be one line end.
                if (piece == "\n" && !field.empty() && field.back() == '\r') continue;
                field += piece;
                written += piece == "\"" ? "\"\"" : piece;
                if (piece.find_first_of("\r\n") != std::string::npos) ++line;
            }
            content += (quoted ? "\"" + written + "\"" : written) + (c < 2 ? "," : "");
            row.push_back(field);
        }
        content += lineEnds[below(3)];
        ++line;
        rows.push_back(row);
    }
    const TempFile file(content);
    app::Progress progress(nullptr);
    Query query;
    CsvReader reader(file.Path(), Reading::Repeated, progress, query);
    for (int pass = 1; pass <= 2; ++pass) {
        for (std::size_t r = 0; r < rows.size(); ++r) {
            ASSERT_TRUE(reader.Next());
            ASSERT_EQ(FieldsOf(reader), rows[r]) << "row " << r;
            try {
                reader.Refuse(0, "");
            } catch (const InputError& error) {
                const std::string begin = file.Path() + ":" + std::to_string(lines[r]) + ": ";
                ASSERT_THAT(error.what(), testing::StartsWith(begin)) << "row " << r;
            }
        }
        ASSERT_FALSE(reader.Next());
        reader.Rewind();
    }
    file.Write("c,b,a\n1,2,3\n");
    EXPECT_THROW(reader.Rewind(), InputError) << "another heading";
}

}  // namespace
