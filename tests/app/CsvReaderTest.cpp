#include "app/data/CsvReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Accredit.h"
#include "app/base/Errors.h"
#include "app/data/ByteSet.h"
#include "app/data/CellText.h"
#include "fakes/Fakes.h"

namespace {

// All that a reader gives: the heading and the rows of a file as "[a][b] [1][2]", or the complaint.
std::string ReadAll(app::CsvReader& reader) {
    std::string rows;
    try {
        for (const std::string& heading : reader.Headings()) rows += '[' + heading + ']';
        while (reader.Next()) {
            rows += ' ';
            for (std::size_t column = 0; column < reader.Fields().size(); ++column) {
                const std::string_view field = reader.Fields()[column];
                (rows += '[').append(field) += ']';
                const double number = reader.Number(column);
                const double expected = app::NumberIn(field, false);
                if (std::memcmp(&number, &expected, sizeof number) != 0) rows += "another number";
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
        std::vector<std::size_t> columns(reader.Headings().size());
        std::iota(columns.begin(), columns.end(), std::size_t{0});
        reader.ExpectNumbers(columns);
        for (const std::size_t helpers : {0U, 3U}) {
            reader.ReadInPieces(16 + 200 * helpers, helpers);
            reader.Rewind();
            EXPECT_EQ(ReadAll(reader), expected) << "in pieces, with " << helpers << " helpers";
        }
    } catch (const app::InputError& error) {
        EXPECT_EQ(error.what(), expected);
    }
}

// What is read ahead may be good for nothing, but the rows before it come first.
TEST(CsvReader, FailsInTheOrderOfTheFile) {
    const std::string rows = fakes::Repeated("a,b\n@3000(1,#\n)");
    const auto shorter = static_cast<off_t>(rows.size()) + 1500;
    for (const bool isBad : {false, true}) {
        for (const std::size_t helpers : {0U, 3U}) {
            const fakes::Files files(rows + (isBad ? "1\n" : "1,2\n") + rows, "");
            fakes::Query query(20, [shorter] { EXPECT_EQ(truncate("A", shorter), 0); });
            app::Progress progress(nullptr);
            app::CsvReader reader({"A"}, app::Reading::Repeated, {}, {}, progress, query);
            reader.ReadInPieces(1000, helpers);
            reader.Rewind();
            EXPECT_EQ(ReadAll(reader),
                      isBad ? "A:3002: column 1 \"a\": the row ends here, the heading has 2 columns"
                            : "A: changed while it was read");
        }
    }
}

TEST(CsvReader, EndsWhenItIsCancelled) {
    const fakes::Files files("a,b\n@3000(1,#\n)", "");
    app::Progress progress(nullptr);
    fakes::Query query(20);
    app::CsvReader reader({"A"}, app::Reading::Repeated, {}, {}, progress, query);
    reader.ReadInPieces(500, 3);
    reader.Rewind();
    EXPECT_THROW(ReadAll(reader), app::Cancelled);
}

TEST(ByteSet, FindsTheSameWithAndWithoutWideRegisters) {
    const std::array<char, 5> bytes = {',', '\n', '\r', '"', '\0'};
    const app::ByteSet<5> wide(bytes);
    const app::PlainByteSet<5> plain(bytes);
    std::string block(app::kBlock, 'x');
    for (std::size_t at = 0; at < block.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            block[at] = static_cast<char>(byte);
            const bool isOne = std::string_view(bytes.data(), bytes.size()).find(block[at]) !=
                               std::string_view::npos;
            ASSERT_EQ(plain.Find(block.data()), std::uint64_t{isOne} << at);
            ASSERT_EQ(wide.Find(block.data()), std::uint64_t{isOne} << at);
        }
        block[at] = 'x';
    }
}

}  // namespace
